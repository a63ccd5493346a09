/* Sends a recording, or two seconds of a buzz, through three codecs and a network that
 * loses every tenth packet of 20 ms, and tells what is left of it with concealment and with
 * silence.
 *
 *   lossy_call [FILE.wav]      16-bit mono PCM at 8 kHz */

#include "zspvoice.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kRate = 8000, kMostSamples = 320, kLost = 10 };

static int16_t* buzz(int* count)
{
    double phase = 0.0;
    int16_t* samples = (int16_t*)calloc(2 * kRate, sizeof *samples);
    if (!samples) exit(1);
    *count = 2 * kRate;
    for (int i = 0; i < *count; ++i) { /* a voice that goes up and down, four syllables a second */
        const double t = (double)i / kRate;
        double sum = 0.0;
        phase += 6.28318530717959 * (120.0 + 30.0 * sin(5.0 * t)) / kRate;
        for (int k = 1; k < 20; ++k)
            sum += sin(k * phase) / k;
        samples[i] = (int16_t)lrint(4000.0 * sum * fabs(sin(12.566 * t)));
    }
    return samples;
}

/* The recording at the codec's sample rate: every sample twice is enough to show the calls. */
static int16_t* atRate(const int16_t* samples, int count, int32_t rate)
{
    const int times = rate / kRate;
    int16_t* result = (int16_t*)malloc((size_t)(count * times) * sizeof *result);
    if (!result) exit(1);
    for (int i = 0; i < count * times; ++i)
        result[i] = samples[i / times];
    return result;
}

/* Signal-to-noise ratio of the received against what would be heard without loss. */
static double call(const ZspvCodec* codec, const int16_t* speech, int count, int conceal)
{
    const int packet = codec->sampleRate / 50; /* samples */
    uint8_t payload[kMostSamples];
    int16_t heard[kMostSamples], wanted[kMostSamples];
    int32_t octets = 0, samples = 0;
    double signal = 0.0, noise = 1e-9;
    ZspvEncoder* encoder = NULL;
    ZspvDecoder *decoder = NULL, *withoutLoss = NULL;
    if (zspvEncoderCreate(codec, NULL, &encoder) != zspStsNoErr ||
        zspvDecoderCreate(codec, NULL, &decoder) != zspStsNoErr ||
        zspvDecoderCreate(codec, NULL, &withoutLoss) != zspStsNoErr)
        exit(1);

    for (int at = 0, n = 0; at + packet <= count; at += packet, ++n) {
        zspvEncode(encoder, speech + at, packet, payload, sizeof payload, &octets, NULL);
        zspvDecode(withoutLoss, zspvFrameSpeech, payload, octets, wanted, kMostSamples, &samples);
        memset(heard, 0, sizeof heard);
        if (n % kLost != kLost - 1)
            zspvDecode(decoder, zspvFrameSpeech, payload, octets, heard, kMostSamples, &samples);
        else
            for (int32_t done = 0; conceal && done < packet; done += samples)
                zspvConceal(decoder, heard + done, kMostSamples - done, &samples);
        for (int i = 0; i < packet; ++i) {
            signal += (double)wanted[i] * wanted[i];
            noise += (double)(wanted[i] - heard[i]) * (wanted[i] - heard[i]);
        }
    }
    zspvEncoderDestroy(encoder);
    zspvDecoderDestroy(decoder);
    zspvDecoderDestroy(withoutLoss);
    return 10.0 * log10(signal / noise);
}

int main(int argumentCount, char** arguments)
{
    static const char* const names[] = {"PCMU", "G722", "G726-32"};
    int count = 0, failed = 0;
    int16_t* speech = argumentCount > 1 ? readWav(arguments[1], kRate, &count) : buzz(&count);

    for (int i = 0; i < 3; ++i) {
        const ZspvCodec* codec = zspvCodecByName(names[i], 8000);
        int16_t* samples = atRate(speech, count, codec->sampleRate);
        const int length = count * (codec->sampleRate / kRate);
        const double concealed = call(codec, samples, length, 1);
        const double silent = call(codec, samples, length, 0);
        printf("%-8s one packet in %d lost: %4.1f dB with concealment, %4.1f dB with silence\n",
               codec->rtpName, kLost, concealed, silent);
        if (!(concealed > silent)) failed = 1;
        free(samples);
    }
    free(speech);
    return failed;
}
