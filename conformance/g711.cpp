// G.711: the input sequences of G.726, which come as code words of both laws and as linear samples.

#include "zspsc/g711.h"
#include "conformance/families.hpp"

namespace zsp::conformance {

namespace {

/// Code words expand to the samples of 14 bits, and the expanded samples compress to them again.
void checkSequence(const Vectors& vectors, const std::string& name)
{
    const std::int32_t law = name.back() == 'a' ? zspG711LawA : zspG711LawMu;
    auto codes = vectors.read<std::uint8_t>("g726/" + name + ".g711");
    const Words want = vectors.words("g726/" + name + ".sl");
    const auto count = static_cast<std::int32_t>(codes.size());

    Words samples(codes.size());
    require(zspsDecode_G711_8u16s(codes.data(), samples.data(), count, law), "the expansion");
    std::vector<std::uint8_t> again(codes.size());
    require(zspsEncode_G711_16s8u(samples.data(), again.data(), count, law), "the compression");
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(sample >> 2);
    requireEqual(samples, want, "samples");
    for (auto& code : codes)
        if (law == zspG711LawMu && code == 0x7f) code = 0xff; // the negative zero is not sent
    requireEqual(again, codes, "code words");
}

} // namespace

void checkG711(const Vectors& vectors, Checks& checks)
{
    for (const std::string name : {"nrm_a", "ovr_a", "pcm_init_a", "nrm_m", "ovr_m", "pcm_init_m"})
        checks.add(name, [&] { checkSequence(vectors, name); });
}

} // namespace zsp::conformance
