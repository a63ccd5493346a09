/* Uses the installed voice library from C: codes and decodes 20 ms. */

#include <zspvoice.h>

#include <stdio.h>

int main(void)
{
    int16_t speech[160] = {0, 4000, 8000, 4000, 0, -4000, -8000, -4000}, heard[160];
    uint8_t payload[160];
    int32_t octets = 0, samples = 0;
    ZspvEncoder* encoder = NULL;
    ZspvDecoder* decoder = NULL;
    const ZspvCodec* codec = zspvCodecByName("pcmu", 8000);
    if (zspvEncoderCreate(codec, NULL, &encoder) || zspvDecoderCreate(codec, NULL, &decoder))
        return 1;
    zspvEncode(encoder, speech, 160, payload, sizeof payload, &octets, NULL);
    zspvDecode(decoder, zspvFrameSpeech, payload, octets, heard, 160, &samples);
    printf("zspvoice %d: %d octets, %d samples, %d heard for %d\n", (int)zspvGetVersion(),
           (int)octets, (int)samples, heard[2], speech[2]);
    zspvEncoderDestroy(encoder);
    zspvDecoderDestroy(decoder);
    return octets != 160 || samples != 160 || heard[2] < 7800 || heard[2] > 8200;
}
