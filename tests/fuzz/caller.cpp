// How one random call is drawn, predicted, made and judged.

#include "tests/fuzz/caller.hpp"

#include "tests/support/unwritten.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <sstream>

namespace zsp::fuzz {

namespace {

constexpr std::int64_t kElementsOfFailingCalls = 4;
constexpr std::int64_t kVectors = 8;

bool isOutside(const Argument& a, double value)
{
    if (!a.list.empty()) return std::find(a.list.begin(), a.list.end(), value) == a.list.end();
    return !(value >= a.low && value <= a.high); // not a number is in no range
}

bool fails(const Description& d, const Check& check, const Call& call)
{
    if (check.fails) return check.fails(call);
    if (check.status != zspStsNullPtrErr)
        return isOutside(d.arguments[check.which[0]], call.real(check.which[0]));
    const auto isNull = [&](std::size_t i) { return !call.data<void>(i); };
    if (check.which[0] != Check::kAll)
        return std::any_of(check.which.begin(), check.which.end(), isNull);
    for (std::size_t i = 0; i < d.arguments.size(); ++i)
        if (d.arguments[i].isPointer() && !d.arguments[i].isOptional && isNull(i)) return true;
    return false;
}

const Check* firstFailing(const Description& d, const Call& call, bool content)
{
    for (const Check& check : d.checks)
        if ((content || !check.looksAtContent) && fails(d, check, call)) return &check;
    return nullptr;
}

/// Whether the blocks of a valid call are small enough.
bool fits(const Description& d, const Call& call)
{
    for (std::size_t i = 0; i < d.arguments.size(); ++i) {
        const Argument& a = d.arguments[i];
        if (!a.isPointer() || a.kind == Argument::Kind::state) continue;
        const auto most = static_cast<std::int64_t>(Blocks::kLargest / d.parameters[i].bytes);
        if (a.length.of(call) > (d.parameters[i].isVectors ? kVectors : most)) return false;
        if (a.before.of(call) > most || a.length.of(call) + a.before.of(call) > most) return false;
        if (a.each.of(call) > most) return false;
    }
    return true;
}

bool sameReals(const std::byte* a, const std::byte* b, std::size_t bytes)
{
    for (std::size_t i = 0; i < bytes; i += sizeof(float)) {
        float x = 0, y = 0;
        std::memcpy(&x, a + i, sizeof x);
        std::memcpy(&y, b + i, sizeof y);
        if (std::memcmp(&x, &y, sizeof x) != 0 && !(std::isnan(x) && std::isnan(y))) return false;
    }
    return true;
}

/// Bytes that no result is likely to have.
void spread(std::byte* block, std::size_t bytes, std::uint8_t pattern)
{
    std::memset(block, pattern, bytes);
}

std::byte* recordIn(std::byte* state, std::size_t alignment)
{
    const auto misalignment = reinterpret_cast<std::uintptr_t>(state) % alignment;
    return state + (alignment - misalignment) % alignment;
}

} // namespace

const Description& Caller::anyExport(const Family& family)
{
    return family.exports[size(choices_.below(static_cast<int>(family.exports.size())))];
}

void Caller::session(const Family& family, const Choices& choices, int most)
{
    choices_ = choices;
    Session session{family, {}, nullptr, nullptr, 0};
    if (family.hasState()) {
        session.setUp = family.draw(choices_);
        session.bytes = size(family.bytes.of(Call(session.setUp, 0)));
        session.state = blocks_.place(session.bytes, 1, choices_);
        session.twin = blocks_.place(session.bytes, 1, choices_);
        for (std::byte* state : {session.state, session.twin}) {
            spread(state, session.bytes, 0x5a);
            family.init(session.setUp, state);
        }
    }
    for (int i = 0; i < most && fault_.empty() && !choices_.exhausted(); ++i) {
        if (family.touch) {
            Choices same = choices_;
            family.touch(same, session.twin);
            family.touch(choices_, session.state);
        }
        call(anyExport(family), session);
    }
    blocks_.release(0);
}

void Caller::session(const Family& family, const Choices& choices, int most, const SetUp& setUp,
                     void* state)
{
    choices_ = choices;
    Session session{family, setUp, static_cast<std::byte*>(state), nullptr, 0};
    for (int i = 0; i < most; ++i)
        call(anyExport(family), session);
    blocks_.release(0);
}

void Caller::call(const Description& d, Session& session)
{
    const std::size_t kept = blocks_.count();
    Call ours(session.setUp, d.arguments.size());
    description_ = &d;
    call_ = &ours;
    const bool passes =
        drawArguments(d, ours, manner_ == Manner::sharing || choices_.below(10) < 7);
    Call twins = ours;
    const Check* check = firstFailing(d, ours, false);
    placeBlocks(d, session, ours, twins, passes || (check && check->mayWrite));
    check = firstFailing(d, ours, true);
    if (check && manner_ != Manner::sharing) {
        for (const Pair& pair : pairs_)
            std::memcpy(pair.twins, pair.ours, pair.bytes);
        stateBefore_.assign(session.state, session.state + session.bytes);
    } else {
        for (const Pair& pair : pairs_)
            for (std::byte* block : {pair.ours, pair.twins})
                if (pair.isFresh) test::markUnwritten(block, pair.bytes);
    }
    const bool looks = manner_ == Manner::looking;
    const ZspStatus status = looks ? d.checkedCall(ours.all()) : d.call(ours.all());
    ++calls_;
    if (looks && !test::leftBehind().empty()) found(test::leftBehind());
    if (manner_ != Manner::sharing) {
        const ZspStatus wanted = check ? check->status : zspStsNoErr;
        if (status != wanted)
            found("status " + std::to_string(status) + " instead of " + std::to_string(wanted));
        else if (check)
            judgeFailed(*check, session);
        else
            judgePassed(d, session, twins);
        if (!blocks_.surroundingsKept()) found("wrote outside of its blocks");
    }
    blocks_.release(kept);
    call_ = nullptr;
}

double Caller::draw(const Argument& a, const Parameter& p, bool cautious)
{
    if (!a.list.empty()) return a.list[size(choices_.below(static_cast<int>(a.list.size())))];
    if (p.isReal)
        return static_cast<float>(a.low + (a.tried - a.low) * choices_.below(4097) / 4096);
    const double high = std::min(a.tried, a.high);
    if (!cautious && choices_.oneIn(8)) return choices_.oneOf(std::array{a.low, high, a.high});
    const auto low = static_cast<std::int64_t>(a.low);
    const bool isSmall = high - a.low > 64 && choices_.below(2) == 0;
    const std::int64_t value =
        choices_.between(low, isSmall ? low + 48 : static_cast<std::int64_t>(high));
    return static_cast<double>((value + a.step - 1) / a.step * a.step);
}

double Caller::spoil(const Argument& a, const Parameter& p)
{
    const double valid = draw(a, p, false);
    const double any = static_cast<double>(choices_.bits<std::uint32_t>()) + kMin;
    const std::array integers = {a.low - 1, a.high + 1, 0.0,       -1.0, 1.0,      p.low,
                                 p.high,    valid + 1,  valid - 1, any,  valid * 2};
    const std::array reals = {std::nan(""),      -HUGE_VAL, HUGE_VAL, a.low - 1e-6,
                              a.high * 1.000001, -valid,    valid + 1};
    if (p.isReal) return static_cast<float>(choices_.oneOf(reals));
    return std::clamp(choices_.oneOf(integers), p.low, std::min(p.high, a.spoiltTo));
}

/// Numbers, and which pointers are null; others point anywhere for the time being. Returns whether
/// all checks pass that look at no content.
bool Caller::drawArguments(const Description& d, Call& call, bool valid)
{
    for (int attempt = 0; attempt < 40; ++attempt) {
        for (std::size_t i = 0; i < d.arguments.size(); ++i) {
            const Argument& a = d.arguments[i];
            if (a.isPointer())
                call.bound(i).pointer = a.isOptional && choices_.oneIn(3) ? nullptr : this;
            else
                call.bound(i).number = draw(a, d.parameters[i], attempt > 3);
        }
        for (int spoils = valid ? 0 : 1 + choices_.below(2); spoils > 0; --spoils) {
            const auto i = size(choices_.below(static_cast<int>(d.arguments.size())));
            if (d.arguments[i].isPointer())
                call.bound(i).pointer = nullptr;
            else
                call.bound(i).number = spoil(d.arguments[i], d.parameters[i]);
        }
        const Check* check = firstFailing(d, call, false);
        const bool isFull = !check || check->mayWrite;
        if ((!check || !valid) && (!isFull || fits(d, call))) return !check;
    }
    for (std::size_t i = 0; i < d.arguments.size(); ++i) // no valid call found
        call.bound(i).pointer = nullptr;
    return false;
}

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
        spread(pair.ours, bytes, 0xb6);
        spread(pair.twins, bytes, 0x3c);
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

void Caller::judgeFailed(const Check& check, const Session& session)
{
    for (const Pair& pair : pairs_)
        if ((pair.use != Use::any || !check.mayWrite) &&
            std::memcmp(pair.ours, pair.twins, pair.bytes) != 0)
            found("a failed call wrote");
    if (session.bytes > 0 && std::memcmp(session.state, stateBefore_.data(), session.bytes) != 0)
        found("a failed call changed the state");
}

void Caller::judgePassed(const Description& d, const Session& session, const Call& twins)
{
    ++validCalls_;
    for (const Pair& pair : pairs_)
        if (pair.use == Use::read && std::memcmp(pair.ours, pair.twins, pair.bytes) != 0)
            found("changed what it may only read");

    d.define ? d.define(twins.all()) : static_cast<void>(d.call(twins.all()));

    for (const Pair& pair : pairs_) {
        if (pair.use != Use::written) continue;
        const bool same = pair.element == Element::reals
                              ? sameReals(pair.ours, pair.twins, pair.bytes)
                              : std::memcmp(pair.ours, pair.twins, pair.bytes) == 0;
        if (!same) found("differs from its definition");
        for (std::size_t i = 0; i < pair.bytes; ++i)
            hash_ = (hash_ ^ static_cast<std::uint8_t>(pair.ours[i])) * 0x100'0000'01b3;
    }
    const std::size_t alignment = session.family.alignment;
    if (session.bytes > 0 && !session.family.holdsPointers &&
        std::memcmp(recordIn(session.state, alignment), recordIn(session.twin, alignment),
                    session.bytes - alignment + 1) != 0)
        found("state differs from the definition's");
}

std::string Caller::current() const
{
    if (!call_) return "no call";
    std::ostringstream text;
    text << description_->name << '(';
    for (std::size_t i = 0; i < description_->arguments.size(); ++i) {
        text << (i ? ", " : "");
        if (description_->arguments[i].isPointer())
            text << call_->data<void>(i);
        else
            text << call_->real(i);
    }
    text << ')';
    return text.str();
}

void Caller::found(const std::string& what)
{
    if (fault_.empty()) fault_ = current() + ": " + what;
}

} // namespace zsp::fuzz
