// The blocks of a random call: memory for the export and for its definition, and what stands in it.

#include "tests/fuzz/caller.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace zsp::fuzz {

namespace {

constexpr std::int64_t kElementsOfFailingCalls = 4;

} // namespace

void Caller::fill(Element element, std::span<std::byte> bytes)
{
    switch (element) {
    case Element::words:
        choices_.fill(elements<std::int16_t>(bytes));
        break;
    case Element::longs:
        choices_.fill(elements<std::int32_t>(bytes));
        break;
    case Element::reals:
        choices_.fill(elements<float>(bytes));
        break;
    default:
        choices_.fill(elements<std::uint8_t>(bytes));
        break;
    }
}

Caller::Pair Caller::placePair(const Argument& a, const Parameter& p, std::size_t elements)
{
    using Kind = Argument::Kind;
    const std::size_t bytes = elements * p.bytes;
    const Use use = a.kind == Kind::in        ? Use::read
                    : a.kind == Kind::scratch ? Use::any
                                              : Use::written;
    const Pair pair{blocks_.place(bytes, p.alignment, choices_),
                    blocks_.place(bytes, p.alignment, choices_),
                    bytes,
                    use,
                    p.element,
                    a.kind == Kind::out || a.kind == Kind::scratch};
    if (pair.isFresh) { // different, to see what stays unwritten
        std::memset(pair.ours, 0xb6, bytes);
        std::memset(pair.twins, 0x3c, bytes);
    } else {
        fill(p.element, {pair.ours, bytes});
        std::memcpy(pair.twins, pair.ours, bytes);
    }
    return pair;
}

void Caller::placeVectors(const Argument& a, const Parameter& p, std::size_t count,
                          std::size_t each, Bound& ours, Bound& twins)
{
    const auto bytes = count * sizeof(void*);
    std::byte* const arrays[] = {blocks_.place(bytes, sizeof(void*), choices_),
                                 blocks_.place(bytes, sizeof(void*), choices_),
                                 blocks_.place(bytes, sizeof(void*), choices_)};
    for (std::size_t i = 0; i < count; ++i) {
        pairs_.push_back(placePair(a, p, each));
        std::memcpy(arrays[0] + i * sizeof(void*), &pairs_.back().ours, sizeof(void*));
        std::memcpy(arrays[1] + i * sizeof(void*), &pairs_.back().twins, sizeof(void*));
    }
    std::memcpy(arrays[2], arrays[0], bytes); // to see that the pointers stay
    pairs_.push_back({arrays[0], arrays[2], bytes, Use::read, Element::records, false});
    ours.pointer = arrays[0];
    twins.pointer = arrays[1];
}

void Caller::placeBlocks(const Description& d, const Session& session, Call& ours, Call& twins,
                         bool passes)
{
    constexpr std::size_t kNone = ~std::size_t{0};
    std::array<std::size_t, 16> pairOf;
    pairOf.fill(kNone);
    pairs_.clear();
    for (std::size_t i = 0; i < d.arguments.size(); ++i) {
        const Argument& a = d.arguments[i];
        const Parameter& p = d.parameters[i];
        if (!a.isPointer() || !ours.data<void>(i)) continue;
        if (a.kind == Argument::Kind::state) {
            ours.bound(i).pointer = session.state;
            twins.bound(i).pointer = session.twin;
            continue;
        }
        const auto count = [&](const Length& length) {
            const std::int64_t n = std::max(std::int64_t{0}, length.of(ours));
            return size(passes ? n : std::min(n, kElementsOfFailingCalls));
        };
        const std::size_t n = count(a.length), before = count(a.before);
        if (p.isVectors) {
            placeVectors(a, p, n, count(a.each), ours.bound(i), twins.bound(i));
            continue;
        }
        Pair pair = placePair(a, p, before + n);
        if (a.fit) {
            a.fit(ours, {pair.ours, pair.bytes});
            std::memcpy(pair.twins, pair.ours, pair.bytes);
        }
        for (const std::size_t other : a.mayBe) {
            if (pairOf[other] == kNone || !choices_.oneIn(3)) continue;
            Pair& shared = pairs_[pairOf[other]];
            if (shared.use != Use::read || shared.bytes != pair.bytes) continue;
            shared.use = Use::any;
            pair.ours = shared.ours;
            pair.isFresh = false;
            if (a.kind == Argument::Kind::inOut) std::memcpy(pair.twins, pair.ours, pair.bytes);
        }
        pairOf[i] = pairs_.size();
        pairs_.push_back(pair);
        ours.bound(i).pointer = pair.ours + before * p.bytes;
        twins.bound(i).pointer = pair.twins + before * p.bytes;
    }
}

} // namespace zsp::fuzz
