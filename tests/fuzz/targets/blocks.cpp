// The bytes choose a session of calls on states of one family of blocks, from its description.
//
//   zspsc_fuzz_blocks --family=NAME ...
//   zspsc_fuzz_blocks --families          names those that have a state

#include "tests/fuzz/caller.hpp"
#include "tests/fuzz/targets/target.hpp"

#include <string>

using namespace zsp::fuzz;

namespace {

const Family* chosen = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    for (int i = 1; i < *argc; ++i) {
        const std::string word = (*argv)[i];
        for (const Family& family : families()) {
            if (word == "--family=" + family.name) chosen = &family;
            if (word == "--families" && family.hasState()) std::puts(family.name.c_str());
        }
        if (word == "--families") std::exit(0);
    }
    if (chosen) return 0;
    std::fputs("--family=NAME is missing, or names none\n", stderr);
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Caller caller(Manner::looking);
    caller.session(*chosen, Choices(std::span(data, size)), 1000);
    must(caller.fault().empty(), caller.fault().c_str());
    return 0;
}
