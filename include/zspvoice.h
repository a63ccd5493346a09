/**
 * @file zspvoice.h
 * @brief Whole voice functions for telephony and conferencing: codecs with concealment, RTP
 * payloads, comfort noise, echo cancellation, voice activity with discontinuous transmission.
 *
 * The life of an object is the same for all of them:
 *
 *     size     zspvXGetSize() says how many bytes an object with these settings needs
 *     start    zspvXInit() builds it in memory of the caller's, at any address
 *     work     any number of calls; each takes what it needs and returns a status
 *     restart  zspvXReset() forgets the signal and keeps the settings; Init again changes both
 *     end      the caller takes its memory back; there is nothing to release
 *
 * zspvXCreate() does size, malloc() and start in one call, and zspvXDestroy() frees what it made.
 * Nothing else here allocates, locks or keeps anything outside of the object: every other function
 * is safe in a real-time thread. Different objects may be used on any threads at once; calls on one
 * object are the caller's to serialise (zspvEchoRender() and zspvEchoCapture() excepted).
 *
 *     #include <zspvoice.h>
 *
 *     // One direction of a call: 20 ms of speech to an RTP payload of 160 octets, and back.
 *     int16_t speech[160], heard[160];
 *     uint8_t payload[160];
 *     int32_t octets, samples;
 *     ZspvEncoder* encoder;
 *     ZspvDecoder* decoder;
 *     const ZspvCodec* codec = zspvCodecByName("PCMU", 8000);
 *     zspvEncoderCreate(codec, NULL, &encoder);
 *     zspvDecoderCreate(codec, NULL, &decoder);
 *     zspvEncode(encoder, speech, 160, payload, sizeof payload, &octets, NULL);
 *     zspvDecode(decoder, zspvFrameSpeech, payload, octets, heard, 160, &samples);
 *
 * What holds for every function:
 *
 *  - The status is the return value: ::zspStsNoErr is success. A failed check writes nothing but
 *    the count that an output would need, where a function says so.
 *  - Checks run in the order null pointers, sizes, values. Every output has a capacity, which is
 *    checked before anything is written.
 *  - Records that settings travel in begin with structSize, which the caller sets to the size of
 *    the record as it was compiled. Zero in any other field means the default, so that
 *    `ZspvParams params = {.structSize = sizeof params};` is complete. Later versions append
 *    fields.
 *  - Samples are 16-bit linear PCM, mono, in the machine's byte order, counted at the codec's
 *    sample rate. Float samples, where they are taken, are -1..1 for full scale.
 *  - An object may be copied bytewise to another address with the same remainder modulo 16, as all
 *    blocks of malloc() have, unless its section says otherwise; the copy goes on by itself.
 *
 * The functions stand in parts of this header in the folder zspvoice beside it. Include this page
 * for all of them, or a part alone.
 */
#ifndef ZSPVOICE_H
#define ZSPVOICE_H

#include "zspvoice/activity.h"
#include "zspvoice/codecs.h"
#include "zspvoice/decoder.h"
#include "zspvoice/echo.h"
#include "zspvoice/encoder.h"
#include "zspvoice/noise.h"
#include "zspvoice/params.h"
#include "zspvoice/reblock.h"
#include "zspvoice/rtp.h"
#include "zspvoice/version.h"

#endif
