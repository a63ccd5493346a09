// Headers of WAV and AU files, read from files and pipes alike. What libsndfile does with a size
// that does not fit (it corrects it without a word) or is not known yet depends on the kind of
// stream; here it does not.
#pragma once

#include "tools/zsp/io/files.hpp"

#include <cstdint>
#include <optional>

namespace zsp::host {

/// What a header says about the samples behind it.
struct SampleHeader {
    const char* container;    ///< "WAV" or "AU"
    std::size_t offset;       ///< of the first sample from the file's beginning
    std::uint32_t tag;        ///< WAV: the format tag; AU: the encoding
    int rate, channels, bits; ///< bits of a sample
    std::uint32_t frameBytes; ///< a sample per channel
    int sndfile;              ///< libsndfile's minor format and byte order; 0 for coded samples
    /// Bytes of samples; nothing when the writer did not know: a pipe's header, or one that was
    /// never completed.
    std::optional<std::uint64_t> bytes;
};

/// The header that `input` begins with; nothing when it begins with something else, or with a
/// variant that takes more than this to read. Nothing is taken from the input.
std::optional<SampleHeader> sampleHeaderOf(InputFile& input);

/// The header of a WAV file with one channel. Without the number of bytes it is as written to
/// pipes: its sizes are those that SoX writes and reads without a warning, and FFmpeg reads to the
/// end.
std::string wavHeader(std::uint32_t tag, int rate, int bits,
                      std::optional<std::uint32_t> dataBytes = std::nullopt);
/// The same of an AU file, with the eight bytes of text without which SoX complains.
std::string auHeader(std::uint32_t encoding, int rate,
                     std::optional<std::uint32_t> dataBytes = std::nullopt);

} // namespace zsp::host
