// Sessions of random calls: how a call is predicted, made and judged.

#include "tests/fuzz/caller.hpp"

#include "tests/fuzz/checks.hpp"
#include "tests/support/unwritten.hpp"

#include <cmath>
#include <cstring>
#include <sstream>

namespace zsp::fuzz {

namespace {

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
            std::memset(state, 0x5a, session.bytes);
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
