/* One frame of speech to an RTP payload and back, in about ten lines. */

#include <zspvoice.h>

#include <stdio.h>
#include <string.h>

int main(void)
{
    int16_t speech[160] = {0}, heard[160];
    uint8_t payload[160];
    int32_t octets = 0, samples = 0;
    for (int i = 0; i < 160; ++i)
        speech[i] = (int16_t)(i % 20 * 800 - 7600);

    const ZspvCodec* codec = zspvCodecByName("G726-32", 8000);
    ZspvEncoder* encoder = NULL;
    ZspvDecoder* decoder = NULL;
    if (zspvEncoderCreate(codec, NULL, &encoder) != zspStsNoErr) return 1;
    if (zspvDecoderCreate(codec, NULL, &decoder) != zspStsNoErr) return 1;
    zspvEncode(encoder, speech, 160, payload, sizeof payload, &octets, NULL);
    zspvDecode(decoder, zspvFrameSpeech, payload, octets, heard, 160, &samples);
    zspvEncoderDestroy(encoder);
    zspvDecoderDestroy(decoder);

    printf("%s: %d samples, %d octets, %d samples\n", codec->rtpName, 160, (int)octets,
           (int)samples);
    return octets == 80 && samples == 160 ? 0 : 1;
}
