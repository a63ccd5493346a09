// Fields of bits, written and read bit by bit as the orders say.

#include "codecs/shared/bits.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace {

using namespace zsp::codecs;

struct Field {
    std::int64_t value;
    int count;
};

/// Fields of 0 to 56 bits, whose values also have bits above them; not always whole octets.
std::vector<Field> randomFields(std::mt19937_64& engine)
{
    std::vector<Field> fields(40);
    for (Field& f : fields)
        f = {static_cast<std::int64_t>(engine()), static_cast<int>(engine() % 57)};
    return fields;
}

template <BitOrder order>
void check(const std::vector<Field>& fields)
{
    std::vector<bool> bits;
    for (const Field& f : fields)
        for (int i = 0; i < f.count; ++i)
            bits.push_back(f.value >> (order == BitOrder::lowestFirst ? i : f.count - 1 - i) & 1);
    std::vector<std::uint8_t> want((bits.size() + 7) / 8 + 2); // zeros behind the last field
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (bits[i])
            want[i / 8] |= static_cast<std::uint8_t>(
                1 << (order == BitOrder::lowestFirst ? i % 8 : 7 - i % 8));

    std::vector<std::uint8_t> got(want.size(), 0xa5);
    BitWriter<order> to(got);
    for (const Field& f : fields)
        to.put(f.value, f.count);
    to.finish();
    EXPECT_EQ(got, want);

    BitReader<order> from(want);
    for (const Field& f : fields)
        EXPECT_EQ(from.takeWide(f.count), f.value & ((std::int64_t{1} << f.count) - 1)) << f.count;
}

TEST(SharedBits, FieldsOfAllWidthsInBothOrders)
{
    std::mt19937_64 engine(20);
    for (int round = 0; round < 200; ++round) {
        const auto fields = randomFields(engine);
        check<BitOrder::highestFirst>(fields);
        check<BitOrder::lowestFirst>(fields);
    }
}

TEST(SharedBits, JoinedFieldsComeApart)
{
    constexpr std::array<int, 4> kWidths = {1, 15, 3, 7};
    constexpr std::array<std::int16_t, 4> kFields = {1, 0x5a5a, 6, 0x45};
    const std::int64_t bits = joined(kWidths, kFields.data());
    EXPECT_EQ(bits, (std::int64_t{1} << 25) + (0x5a5a << 10) + (6 << 7) + 0x45);
    std::array<std::int16_t, 4> apart{};
    split(kWidths, bits, apart.data());
    EXPECT_EQ(apart, kFields);
}

} // namespace
