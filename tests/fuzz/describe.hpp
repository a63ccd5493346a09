// The families of the library, each described in a file of its room.
#pragma once

#include "tests/fuzz/description.hpp"

namespace zsp::fuzz {

Family sizes();
std::vector<Family> common();
std::vector<Family> alc();
std::vector<Family> amrwb();
std::vector<Family> ec();
std::vector<Family> g711();
std::vector<Family> g722();
std::vector<Family> g726();
std::vector<Family> g729();
std::vector<Family> gsmamr();

} // namespace zsp::fuzz
