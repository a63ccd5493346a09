// Gathers what the files in describe/ describe.

#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

/// The files' functions, handed in before main() begins.
std::vector<std::vector<Family> (*)()>& handedIn()
{
    static std::vector<std::vector<Family> (*)()> all;
    return all;
}

} // namespace

Described::Described(std::vector<Family> (*describe)())
{
    handedIn().push_back(describe);
}

const std::vector<Family>& families()
{
    static const std::vector<Family> all = [] {
        std::vector<Family> families;
        for (auto* describe : handedIn())
            for (Family& family : describe())
                families.push_back(std::move(family));
        std::ranges::sort(families, {}, &Family::name); // in no order of files
        return families;
    }();
    return all;
}

} // namespace zsp::fuzz
