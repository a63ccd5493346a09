// The sub-band filter bank for tests: both families in one form, and shapes to run them in.
#pragma once

#include "core/state.hpp"
#include "zspsc/ec/bank.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace zsp::test {

inline std::size_t bytes(std::int32_t size)
{
    return static_cast<std::size_t>(size);
}

/// The float and the 16-bit family, so that one test can run on either.
struct Float {
    using Sample = float;
    using Folded = float;
    using Bin = Zsp32fc;
    static constexpr auto getSize = &zspsSubbandProcessGetSize_32f;
    static constexpr auto init = &zspsSubbandProcessInit_32f;
};

struct Fixed {
    using Sample = std::int16_t;
    using Folded = std::int32_t;
    using Bin = Zsp32sc;
    static constexpr auto getSize = &zspsSubbandProcessGetSize_16s;
    static constexpr auto init = &zspsSubbandProcessInit_16s;
};

template <typename Family>
struct Sizes {
    std::int32_t state = 0, init = 0, work = 0;

    Sizes(std::int32_t order, std::int32_t windowLen)
    {
        EXPECT_EQ(Family::getSize(order, windowLen, &state, &init, &work), zspStsNoErr);
        EXPECT_EQ(init, 0);
    }
};

/// A state with its work buffer, both of the reported sizes and at odd addresses.
template <typename Family>
class Bank {
  public:
    using Samples = std::vector<typename Family::Sample>;
    using Bins = std::vector<typename Family::Bin>;

    Bank(std::int32_t order, std::int32_t frameSize, std::int32_t windowLen,
         const typename Family::Sample* window)
        : bins_((std::size_t{1} << order) / 2 + 1), frame_(bytes(frameSize))
    {
        const Sizes<Family> sizes(order, windowLen);
        state_.resize(bytes(sizes.state) + 1);
        work_.resize(bytes(sizes.work) + 1);
        EXPECT_EQ(Family::init(&state_[1], order, frameSize, windowLen, window, nullptr),
                  zspStsNoErr);
    }

    const Bins& analyse(const Samples& frame, std::int32_t scaleFactor = 0)
    {
        ZspStatus status = zspStsInternalErr;
        if constexpr (std::is_same_v<Family, Float>)
            status = zspsSubbandAnalysis_32f32fc(frame.data(), bins_.data(), &state_[1], &work_[1]);
        else
            status = zspsSubbandAnalysis_16s32sc_Sfs(frame.data(), bins_.data(), &state_[1],
                                                     scaleFactor, &work_[1]);
        EXPECT_EQ(status, zspStsNoErr);
        return bins_;
    }

    const Samples& synthesise(const Bins& bins, std::int32_t scaleFactor = 0)
    {
        ZspStatus status = zspStsInternalErr;
        if constexpr (std::is_same_v<Family, Float>)
            status =
                zspsSubbandSynthesis_32fc32f(bins.data(), frame_.data(), &state_[1], &work_[1]);
        else
            status = zspsSubbandSynthesis_32sc16s_Sfs(bins.data(), frame_.data(), &state_[1],
                                                      scaleFactor, &work_[1]);
        EXPECT_EQ(status, zspStsNoErr);
        return frame_;
    }

    /// What stands between window and transform: at the work buffer's first 16-byte boundary.
    std::vector<typename Family::Folded> block()
    {
        std::vector<typename Family::Folded> values(2 * (bins_.size() - 1));
        std::memcpy(values.data(), zsp::alignUp(&work_[1], 16), values.size() * sizeof values[0]);
        return values;
    }

  private:
    std::vector<std::byte> state_, work_;
    Bins bins_;
    Samples frame_;
};

struct Shape {
    std::int32_t order, frameSize, windowLen;

    std::size_t points() const { return std::size_t{1} << order; }
    std::string name() const
    {
        return "order " + std::to_string(order) + ", hop " + std::to_string(frameSize) + ", " +
               std::to_string(windowLen) + " taps";
    }
};

/// Every order, with one block and several, hops from one sample to a whole block.
inline std::vector<Shape> shapes()
{
    std::vector<Shape> all = {{5, 24, 128}, {6, 44, 256}, {5, 20, 160}, {6, 40, 320}};
    for (std::int32_t order = 1; order <= 12; ++order) {
        const std::int32_t n = 1 << order;
        all.insert(all.end(), {{order, n, n}, {order, n / 2, 2 * n}, {order, 1, 3 * n}});
        if (order > 2) all.push_back({order, n - 3, 5 * n});
    }
    return all;
}

/// The delay line after the frame has come in.
template <typename T>
std::vector<T> shifted(std::vector<T> delay, const std::vector<T>& frame)
{
    delay.erase(delay.begin(), delay.begin() + static_cast<std::ptrdiff_t>(frame.size()));
    delay.insert(delay.end(), frame.begin(), frame.end());
    return delay;
}

} // namespace zsp::test
