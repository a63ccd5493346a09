// Files of any content, which the host decodes: by their headers, or with options that the last two
// bytes choose.

#include "tests/fuzz/targets/host.hpp"
#include "tools/zsp/codec/choice.hpp"
#include "tools/zsp/io/failure.hpp"

#include <vector>

using namespace zsp::fuzz;
using namespace zsp::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    constexpr std::array kLaws = {"linear", "mu", "a"};
    const unsigned codec = data[size - 1], options = data[size - 2];
    const MemoryFile file(data, size);
    std::vector<std::string> words = {file.path(), "-o", "/dev/null"};
    const auto codecs = allCodecs();
    if (codec % 4 != 0)
        words.insert(words.end(), {"-c", codecs[codec / 4 % codecs.size()]->rtpName});
    if (options & 1) words.insert(words.end(), {"-l", kLaws[options >> 1 & 1 ? 1 : 2]});
    if (options & 4) words.emplace_back("-u");
    if (options & 8) words.insert(words.end(), {"-r", std::to_string(16 + 8 * (options >> 4 & 3))});
    try {
        runCommand(decodeCommand(), words);
    } catch (const Failure&) {
        // which says what is wrong with the file
    } catch (const UsageError&) {
        // which says what is wrong with the options
    }
    return 0;
}
