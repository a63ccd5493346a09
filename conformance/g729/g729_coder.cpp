// G.729's coder: what its blocks give in some frames.

#include "conformance/families.hpp"
#include "conformance/trace.hpp"
#include "zspsc/g729/lp.h"

namespace zsp::conformance {

namespace {

/// Correlations, filter and pairs of some frames of an encoder.
void checkPrediction(const Vectors& vectors, const std::string& annex)
{
    const Trace trace(vectors, "g729codec/encode." + annex + ".trace.txt", "frame");
    for (const auto& frame : trace.frames()) {
        const auto line = [&](const char* name) { return frame.second.at(name).at(0); };
        auto corr = line("autocorr_high"), low = line("autocorr_low");
        for (std::size_t i = 0; i < corr.size(); ++i)
            corr[i] = corr[i] * 65536 + 2 * low.at(i);
        require(zspsLagWindow_G729_32s_I(corr.data()), "the lag window");
        auto windowed = corr;
        for (auto& x : windowed)
            x >>= 16;
        requireEqual(windowed, line("lag_windowed_high"), "lag window");
        Words lpc(11), reflection(10), lsp(10);
        std::int16_t error = 0;
        require(zspsLevinsonDurbin_G729_32s16s(corr.data(), lpc.data(), reflection.data(), &error),
                "the recursion");
        requireEqual(lpc, line("lpc"), "lpc");
        requireEqual(reflection, line("reflection"), "reflection");
        const auto toLsp = annex == "main" ? zspsLPCToLSP_G729_16s : zspsLPCToLSP_G729A_16s;
        require(toLsp(lpc.data(), lsp.data(), lsp.data()), "the pairs");
        requireEqual(lsp, line("lsp"), "lsp");
    }
}

} // namespace

void checkG729Coder(const Vectors& vectors, Checks& checks)
{
    for (const std::string annex : {"main", "annexa"})
        checks.add("linear prediction, " + annex, [&] { checkPrediction(vectors, annex); });
    checkG729Encoder(vectors, checks);
    checkG729Decoder(vectors, checks);
    checkG729Pauses(vectors, checks);
}

} // namespace zsp::conformance
