// The built-in prototype windows of the sub-band filter bank: symmetric low-pass prototypes with
// negative side lobes, for the shapes (order 5, hop 24, 128 taps) and (order 6, hop 44, 256 taps).
// Each is the equal-weight least-squares low-pass of its length; the decimals are exact in single
// precision.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::ec {

namespace detail {

// clang-format off
/// The first halves; tap i equals tap L-1-i.
inline constexpr std::array<float, 64> kHalfWindow128 = {
    0.0131806126F, 0.00714625278F, 0.000423472084F, -0.00695371302F, -0.014939175F, -0.0234745145F,
    -0.0324890539F, -0.0419000052F, -0.0516127795F, -0.061521478F, -0.071509555F, -0.0814506263F,
    -0.0912094787F, -0.100643151F, -0.109602265F, -0.117932409F, -0.12547566F, -0.132072255F,
    -0.137562275F, -0.14178744F, -0.144592971F, -0.145829454F, -0.145354703F, -0.143035635F,
    -0.138750076F, -0.132388532F, -0.123855859F, -0.113072842F, -0.0999776348F, -0.084527038F,
    -0.0666976422F, -0.0464867838F, -0.0239132624F, 0.000982107944F, 0.02813619F, 0.0574634448F,
    0.088856101F, 0.12218453F, 0.157297909F, 0.194025069F, 0.232175648F, 0.271541387F, 0.311897665F,
    0.35300526F, 0.394612312F, 0.436456382F, 0.478266656F, 0.51976639F, 0.560675144F, 0.600711703F,
    0.639596283F, 0.677053213F, 0.712813556F, 0.746617734F, 0.778217733F, 0.807379723F,
    0.833886206F, 0.857538044F, 0.878156602F, 0.895585358F, 0.909691334F, 0.920366704F,
    0.927529514F, 0.931124747F};

inline constexpr std::array<float, 128> kHalfWindow256 = {
    0.0437838063F, 0.0434183739F, 0.0428387001F, 0.0420373753F, 0.0410077088F, 0.0397437848F,
    0.0382405221F, 0.0364937F, 0.0345000327F, 0.0322571918F, 0.0297638662F, 0.0270197876F,
    0.0240257736F, 0.0207837615F, 0.0172968265F, 0.0135692218F, 0.00960638467F, 0.00541496417F,
    0.00100282626F, -0.00362093491F, -0.00844599493F, -0.0134608001F, -0.0186525732F,
    -0.0240073279F, -0.0295098815F, -0.0351438746F, -0.0408918001F, -0.0467350371F, -0.0526538789F,
    -0.0586275756F, -0.0646343902F, -0.0706516281F, -0.0766557232F, -0.0826222524F, -0.0885260478F,
    -0.0943412334F, -0.1000413F, -0.105599187F, -0.11098738F, -0.116177954F, -0.121142693F,
    -0.125853151F, -0.130280763F, -0.13439694F, -0.138173163F, -0.141581059F, -0.144592524F,
    -0.147179812F, -0.149315655F, -0.150973305F, -0.152126715F, -0.152750567F, -0.152820438F,
    -0.15231283F, -0.151205316F, -0.149476632F, -0.147106737F, -0.144076899F, -0.140369862F,
    -0.135969833F, -0.130862594F, -0.125035614F, -0.118478075F, -0.111180954F, -0.103137098F,
    -0.0943412557F, -0.0847901553F, -0.0744825304F, -0.0634191707F, -0.0516029634F, -0.0390388966F,
    -0.0257340968F, -0.0116978511F, 0.00305840233F, 0.018521063F, 0.0346743725F, 0.0515004396F,
    0.068979241F, 0.0870886669F, 0.10580454F, 0.125100672F, 0.14494887F, 0.165319085F, 0.18617934F,
    0.207495913F, 0.229233339F, 0.251354545F, 0.273820877F, 0.296592236F, 0.319627166F,
    0.342882931F, 0.366315663F, 0.389880419F, 0.413531363F, 0.437221855F, 0.460904539F,
    0.484531492F, 0.508054435F, 0.531424701F, 0.554593563F, 0.577512085F, 0.600131631F,
    0.622403681F, 0.644280136F, 0.665713429F, 0.686656594F, 0.707063437F, 0.726888776F,
    0.746088326F, 0.764619052F, 0.782439291F, 0.799508691F, 0.815788388F, 0.83124131F, 0.84583199F,
    0.859527051F, 0.872294784F, 0.884105742F, 0.894932508F, 0.904750049F, 0.913535357F,
    0.921268046F, 0.927929997F, 0.933505654F, 0.937981963F, 0.941348433F, 0.943597138F,
    0.944722772F};
// clang-format on

template <std::size_t N>
constexpr std::array<float, 2 * N> mirrored(const std::array<float, N>& half)
{
    std::array<float, 2 * N> window{};
    std::copy(half.begin(), half.end(), window.begin());
    std::copy(half.rbegin(), half.rend(), window.begin() + N);
    return window;
}

/// Q13, truncated towards zero.
template <std::size_t N>
constexpr std::array<std::int16_t, N> truncated_Q13(const std::array<float, N>& window)
{
    std::array<std::int16_t, N> taps{};
    std::transform(window.begin(), window.end(), taps.begin(),
                   [](float tap) { return static_cast<std::int16_t>(tap * 8192.0F); });
    return taps;
}

} // namespace detail

inline constexpr auto kWindow128 = detail::mirrored(detail::kHalfWindow128);
inline constexpr auto kWindow256 = detail::mirrored(detail::kHalfWindow256);
inline constexpr auto kWindow128_Q13 = detail::truncated_Q13(kWindow128);
inline constexpr auto kWindow256_Q13 = detail::truncated_Q13(kWindow256);

static_assert(kWindow128_Q13[0] == 107 && kWindow128_Q13[63] == 7627 && kWindow128_Q13[64] == 7627);
static_assert(kWindow256_Q13[0] == 358 && kWindow256_Q13[127] == 7739 &&
              kWindow256_Q13[32] == -627);

} // namespace zsp::ec
