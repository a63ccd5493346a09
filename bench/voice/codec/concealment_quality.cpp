// Prints what is left of speech when 3 % and 10 % of its packets of 20 ms are lost: by the
// decoders' concealment, by repetition of the last packet, and with silence instead.
//
// Both measures are means over the lost packets and the two after each of them, against the same
// coded speech without loss: the segmental signal-to-noise ratio (more is better) and the log-
// spectral distance (less is better).

#include "bench/support/wav.hpp"
#include "tests/voice/codec/lossy_call.hpp"

#include <cstdio>
#include <cstdlib>

int main()
{
    constexpr int kCalls = 10;
    std::puts("                      segmental SNR in dB            log-spectral distance in dB");
    std::puts("codec        lost  conceal  repeat  silence          conceal  repeat  silence");
    for (std::int32_t i = 0; i < (getenv("N") ? atoi(getenv("N")) : zspvCodecCount()); ++i) {
        const ZspvCodec* codec = zspvCodecByIndex(i);
        const char* file = codec->sampleRate == 8000 ? ZSPSC_DATA_DIR "/speech_8k.wav"
                                                     : ZSPSC_DATA_DIR "/speech_16k.wav";
        const auto speech = zsp::bench::readWav(file);
        if (speech.empty()) {
            std::fprintf(stderr, "%s: cannot be read\n", file);
            return 1;
        }
        const zsp::test::LossyCall call(codec, speech);
        for (const double share : {0.03, 0.10}) {
            using zsp::test::Filling;
            const auto conceal = call.damage(share, Filling::concealment, kCalls);
            const auto repeat = call.damage(share, Filling::repetition, kCalls);
            const auto silence = call.damage(share, Filling::silence, kCalls);
            std::printf("%-12s %3.0f %%  %7.2f %7.2f  %7.2f          %7.2f %7.2f  %7.2f\n",
                        codec->rtpName, 100 * share, conceal.segmentalSnrDb, repeat.segmentalSnrDb,
                        silence.segmentalSnrDb, conceal.spectralDistanceDb,
                        repeat.spectralDistanceDb, silence.spectralDistanceDb);
        }
    }
    return 0;
}
