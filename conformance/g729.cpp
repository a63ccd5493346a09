// G.729: high-pass filter, line spectral pairs to frequencies, inverse square root.

#include "conformance/families.hpp"
#include "zspsc/correlation.h"
#include "zspsc/g729/filters.h"

#include <algorithm>
#include <array>

namespace zsp::conformance {

namespace {

using Coeffs = std::array<std::int16_t, 6>; // a0 a1 a2 b0 b1 b2

constexpr Coeffs kPre = {4096, 7807, -3733, 1899, -3798, 1899};
constexpr Coeffs kDoubledPre = {4096, 7807, -3733, 3798, -7596, 3798};
constexpr Coeffs kPost = {8192, 15836, -7667, 7699, -15398, 7699};

struct Filter {
    const char* input;
    const char* output;
    Coeffs coeffs;
    int scaleFactor;
};

constexpr Filter kFilters[] = {
    {"hp_speech.in", "hp_speech.pre", kPre, 12},
    {"hp_speech.in", "hp_speech.post", kPost, 13},
    {"hp_extreme.in", "hp_extreme.pre", kPre, 12},
    {"hp_extreme.in", "hp_extreme.post", kPost, 13},
    {"hp_boundary_pre.in", "hp_boundary_pre.out", kDoubledPre, 12},
    {"hp_boundary_post.in", "hp_boundary_post.out", kPost, 13},
};

Words filtered(Words samples, const Filter& filter, Split split)
{
    std::int32_t size = 0;
    require(zspsHighPassFilterSize_G729(&size), "the state's size");
    StateBuffer state(size, 3);
    require(zspsHighPassFilterInit_G729(filter.coeffs.data(), state.data()), "the initialisation");
    Cuts cuts(split, samples.size(), 1);
    for (std::size_t i = 0, n = cuts.next(); n > 0; i += n, n = cuts.next())
        require(zspsHighPassFilter_G729_16s_ISfs(&samples[i], static_cast<std::int32_t>(n),
                                                 filter.scaleFactor, state.data()),
                "a block");
    return samples;
}

using Convert = ZspStatus (*)(const std::int16_t*, std::int16_t*);

void checkLsf(const Vectors& vectors, Convert convert, const std::string& file)
{
    constexpr std::size_t kOrder = 10;
    const Words lsp = vectors.words("g729/lsp.in.s16");
    const std::size_t sets = recordsOf(lsp.size(), kOrder, "lsp.in.s16");
    Words out(lsp.size()), inPlace = lsp;
    for (std::size_t i = 0; i < sets; ++i) {
        require(convert(&lsp[kOrder * i], &out[kOrder * i]), "a set");
        require(convert(&inPlace[kOrder * i], &inPlace[kOrder * i]), "a set in place");
    }
    requireEqual(out, vectors.words("g729/" + file), file);
    requireEqual(inPlace, out, file + ", in place");
}

void checkInvSqrt(const Vectors& vectors)
{
    auto x = vectors.read<std::int32_t>("math/invsqrt.in.s32");
    require(zspsInvSqrt_32s_I(x.data(), static_cast<std::int32_t>(x.size())), "the call");
    requireEqual(x, vectors.read<std::int32_t>("math/invsqrt.out.s32"), "invsqrt.out.s32");
}

} // namespace

void checkG729(const Vectors& vectors, Checks& checks)
{
    for (const Filter& filter : kFilters)
        checks.add(std::string("high-pass filter, ") + filter.output, [&] {
            const Words input = vectors.words(std::string("g729/") + filter.input + ".s16");
            const Words want = vectors.words(std::string("g729/") + filter.output + ".s16");
            for (const Split split : kSplits)
                requireEqual(filtered(input, filter, split), want, filter.output);
        });
    checks.add("LSP to LSF, in radians",
               [&] { checkLsf(vectors, zspsLSPToLSF_G729_16s, "lsp.radian.s16"); });
    checks.add("LSP to LSF, normalised",
               [&] { checkLsf(vectors, zspsLSPToLSF_Norm_G729_16s, "lsp.norm.s16"); });
    checks.add("inverse square root", [&] { checkInvSqrt(vectors); });
}

} // namespace zsp::conformance
