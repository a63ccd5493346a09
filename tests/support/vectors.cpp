// Where the reference vectors lie, and the checks of a family over them.

#include "tests/support/vectors.hpp"

#include "conformance/families.hpp"

std::filesystem::path zsp::test::vectorPath(const std::string& name)
{
    return std::filesystem::path(ZSPSC_VECTOR_DIR) / name;
}

void zsp::test::expectConforms(const std::string& name, std::size_t count,
                               const std::string& prefix)
{
    std::size_t found = 0;
    for (const auto& family : conformance::families()) {
        if (name != family.name) continue;
        for (const auto& check : checksOf(family, conformance::Vectors(vectorPath("")))) {
            if (!check.name.starts_with(prefix)) continue;
            ++found;
            EXPECT_EQ(check.fault, "") << name << ", " << check.name;
        }
    }
    EXPECT_EQ(found, count) << name << ", checks that begin with '" << prefix << "'";
}
