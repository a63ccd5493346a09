// Runs a target over the inputs in a folder and over variants of each, where there is no libFuzzer.
//
//   zspsc_fuzz_TARGET [--OPTION=VALUE] FOLDER [VARIANTS]

#include "tests/fuzz/targets/target.hpp"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*)());

namespace {

using Bytes = std::vector<std::uint8_t>;

const char* current = "";
int variant = 0;

/// The last words of a crash.
void say()
{
    std::fprintf(stderr, "in %s, variant %d\n", current, variant);
}

/// Changes, removes or doubles some bytes; what remains is a block of its own size.
Bytes varied(Bytes bytes, zsp::fuzz::Choices choices)
{
    const auto place = [&] {
        return bytes.begin() +
               static_cast<std::ptrdiff_t>(choices.bits<std::uint32_t>() % bytes.size());
    };
    for (int changes = 1 + choices.below(4); changes > 0 && !bytes.empty(); --changes) {
        auto first = place(), last = place();
        if (last < first) std::swap(first, last);
        switch (choices.below(6)) {
        case 0:
            *first ^= static_cast<std::uint8_t>(1 << choices.below(8));
            break;
        case 1:
            bytes.erase(first, last);
            break;
        case 2:
            bytes.resize(static_cast<std::size_t>(last - bytes.begin()));
            break;
        case 3: {
            const Bytes part(first, std::min(last, first + 64));
            bytes.insert(place(), part.begin(), part.end());
            break;
        }
        default:
            *first = choices.oneOf(std::array<std::uint8_t, 6>{0, 1, 0x7f, 0x80, 0xff, '='});
            break;
        }
    }
    return {bytes.begin(), bytes.end()};
}

} // namespace

int main(int argc, char** argv)
{
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i)
        if (!std::string(argv[i]).starts_with("--")) words.emplace_back(argv[i]);
    if (words.empty()) return std::fprintf(stderr, "%s FOLDER [VARIANTS]\n", argv[0]), 2;
    if (__sanitizer_set_death_callback) __sanitizer_set_death_callback(say);
    std::signal(SIGABRT, [](int) { say(); });

    std::vector<std::filesystem::path> paths(std::filesystem::directory_iterator(words[0]), {});
    std::ranges::sort(paths);
    const int variants = words.size() > 1 ? std::stoi(words[1]) : 0;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
        const std::string name = path.string();
        current = name.c_str();
        for (variant = 0; variant <= variants; ++variant) {
            const auto seed = static_cast<std::uint64_t>(variant);
            const Bytes input = variant ? varied(bytes, zsp::fuzz::Choices(seed)) : bytes;
            LLVMFuzzerTestOneInput(input.data(), input.size());
        }
    }
    std::fprintf(stderr, "%zu inputs, %d variants of each\n", paths.size(), variants);
    return paths.empty(); // which would show nothing
}
