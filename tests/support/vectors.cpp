// Where the reference vectors lie.

#include "tests/support/vectors.hpp"

std::filesystem::path zsp::test::vectorPath(const std::string& name)
{
    return std::filesystem::path(ZSPSC_VECTOR_DIR) / name;
}
