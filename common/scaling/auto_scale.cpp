// Block scaling: a vector of words is shifted so that its largest magnitude keeps a given headroom.

#include "common/scaling/auto_scale.hpp"

#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <cassert>
#include <cstdlib>

namespace zsp::common {

int blockNorm(In16 src) noexcept
{
    int largest = 0;
    for (const fx::Word x : src)
        largest = std::max(largest, std::abs(int{x}));
    return fx::norm_s(fx::sat16(largest));
}

void shiftBlock(In16 src, Out16 dst, int shift) noexcept
{
    if (shift >= 0) {
        assert(shift <= blockNorm(src));
        for (std::size_t i = 0; i < dst.size(); ++i)
            dst[i] = static_cast<fx::Word>(src[i] * (1 << shift));
    } else {
        const int right = std::min(-shift, 15);
        for (std::size_t i = 0; i < dst.size(); ++i)
            dst[i] = static_cast<fx::Word>(src[i] >> right);
    }
}

} // namespace zsp::common

namespace zsp::entry {

ZspStatus zspsAutoScale_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                            std::int32_t* scale)
{
    if (!src || !dst || !scale) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (*scale < 0) return zspStsScaleRangeErr;

    const auto n = static_cast<std::size_t>(len);
    const std::int32_t shift = common::blockNorm({src, n}) - *scale;
    common::shiftBlock({src, n}, {dst, n}, shift);
    *scale = shift;
    return zspStsNoErr;
}

ZspStatus zspsAutoScale_16s_I(std::int16_t* srcDst, std::int32_t len, std::int32_t* scale)
{
    return zspsAutoScale_16s(srcDst, srcDst, len, scale);
}

} // namespace zsp::entry
