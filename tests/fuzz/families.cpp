// Gathers the descriptions of all rooms.

#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

const std::vector<Family>& families()
{
    static const std::vector<Family> all = [] {
        std::vector<Family> families = {sizes()};
        for (auto* room : {common, g711, g722, g726, g729, gsmamr, amrwb, ec, alc})
            for (Family& family : room())
                families.push_back(std::move(family));
        return families;
    }();
    return all;
}

} // namespace zsp::fuzz
