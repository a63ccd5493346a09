// What the command lines of zsp encode and zsp decode ask for.
#pragma once

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/codec/coded_file.hpp"
#include "tools/zsp/codec/packing.hpp"
#include "tools/zsp/io/audio.hpp"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace zsp::host {

struct CodingOptions {
    CodecWish wish;
    const AudioFormat* format = nullptr; // of the audio side
    std::optional<Encoding> law;         // of the samples to write
    bool unpacked = false;
    bool dtx = false;
    std::optional<bool> highPass, postFilter;
};

bool isFamily(const CodecSetting& setting, std::string_view name);
/// Bits of a code word where code words are dealt with one by one; throws for other codecs.
int wordBits(const CodingOptions& options, const CodecSetting& setting);
/// What an encoder does; throws for an option that the codec does not have.
CodecSetting encoderSetting(const CodingOptions& options, CodecSetting setting);
/// What a decoder does; throws for an option that the codec does not have.
CodecSetting decoderSetting(const CodingOptions& options, CodecSetting setting);
/// How the code words of a coded file lie.
Packing packingOf(const CodingOptions& options, const CodecSetting& setting);

/// What both commands share.
std::vector<Option> codingOptions(const std::shared_ptr<CodingOptions>& options);

} // namespace zsp::host
