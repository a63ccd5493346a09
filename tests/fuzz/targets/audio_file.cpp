// Audio files of any content, as the host reads them: by their headers, and as the kind that the
// last byte chooses.

#include "tests/fuzz/targets/host.hpp"
#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/io/failure.hpp"

#include <vector>

using namespace zsp::fuzz;
using namespace zsp::host;

namespace {

constexpr std::array kKinds = {"wav", "au", "flac", "aiff", "raw", "ul", "al"};

void read(const std::string& path, const AudioFormat* format, int rate)
{
    try {
        AudioReader reader(path, format);
        must(reader.rate() > 0 && reader.channels() > 0, "an open file has a rate and channels");
        VoiceInput input(reader, rate);
        std::vector<std::int16_t> block(4096);
        for (int blocks = 0; blocks < 64; ++blocks) // small files can stand for hours
            if (input.read(block) < block.size()) break;
    } catch (const Failure&) {
        // which says what is wrong with the file
    }
}

} // namespace

/// What libvorbis loses of damaged headers.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libvorbis.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const MemoryFile file(data, size);
    read(file.path(), nullptr, 0);
    read(file.path(), audioFormatByName(kKinds[data[size - 1] % kKinds.size()]), 8000);
    return 0;
}
