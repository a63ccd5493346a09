// Runs the rows of a contract, and keeps the list of all contracts.

#include "tests/support/contract.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace zsp::test {

namespace {

constexpr std::size_t kGuard = 256; // also what some exports read before a block: 120 words
constexpr std::byte kGuardByte{0xA5};

/// A copy of an argument's content between guard bytes, at a 64-byte boundary plus `offset`.
class Guarded {
  public:
    Guarded(const Argument& argument, std::size_t offset)
        : storage_(kGuard + 64 + offset + argument.content.size() + kGuard, kGuardByte),
          size_(argument.content.size())
    {
        const auto start = reinterpret_cast<std::uintptr_t>(storage_.data()) + kGuard;
        begin_ = kGuard + (64 - (start & 63)) % 64 + offset;
        std::copy(argument.content.begin(), argument.content.end(), data());
        if (argument.setUp) argument.setUp(data());
        before_ = storage_;
    }

    std::byte* data() { return storage_.data() + begin_; }

    bool contentKept() const { return same(begin_, begin_ + size_); }
    bool guardsKept() const { return same(0, begin_) && same(begin_ + size_, storage_.size()); }

  private:
    bool same(std::size_t from, std::size_t to) const
    {
        const auto at = [](const auto& v, std::size_t i) {
            return v.begin() + static_cast<std::ptrdiff_t>(i);
        };
        return std::equal(at(storage_, from), at(storage_, to), at(before_, from));
    }

    std::vector<std::byte> storage_;
    std::vector<std::byte> before_;
    std::size_t size_;
    std::size_t begin_ = 0;
};

bool touchDifferentArguments(const Row& a, const Row& b)
{
    for (const Change& x : a.changes)
        for (const Change& y : b.changes)
            if (x.index == y.index) return false;
    return true;
}

std::vector<Argument> apply(std::vector<Argument> arguments, const Row& row)
{
    for (const Change& change : row.changes)
        arguments.at(change.index) = change.argument;
    return arguments;
}

} // namespace

void Contract::check(const std::vector<Argument>& arguments, ZspStatus want, std::size_t offset,
                     const std::string& what) const
{
    SCOPED_TRACE(name_ + ": " + what);
    std::vector<Guarded> buffers;
    buffers.reserve(arguments.size());
    std::vector<Bound> bound;
    for (const Argument& a : arguments) {
        buffers.emplace_back(a, a.kind == Argument::Kind::state ? offset : 0);
        void* given = a.fixed ? const_cast<void*>(a.fixed) : buffers.back().data();
        bound.push_back({a.isNull ? nullptr : given, a.value});
    }

    EXPECT_EQ(call_(bound), want);
    EXPECT_EQ(leftBehind(), "");

    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (!arguments[i].isPointer()) continue;
        EXPECT_TRUE(buffers[i].guardsKept()) << "wrote outside of argument " << i;
        const bool mayWrite =
            arguments[i].kind != Argument::Kind::input && want >= 0 && want != zspStsOverflow;
        EXPECT_TRUE(mayWrite || arguments[i].isReported || buffers[i].contentKept())
            << "wrote argument " << i;
    }
}

void Contract::run() const
{
    ASSERT_EQ(arguments_.size(), arity_) << name_;
    check(arguments_, zspStsNoErr, 0, "valid call");
    check(arguments_, zspStsNoErr, 1, "valid call, states at odd addresses");

    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const std::vector<Argument> spoiled = apply(arguments_, rows_[i]);
        const std::string what = "row " + std::to_string(i);
        check(spoiled, rows_[i].want, 0, what);
        for (std::size_t j = i + 1; j < rows_.size(); ++j)
            if (touchDifferentArguments(rows_[i], rows_[j]))
                check(apply(spoiled, rows_[j]), rows_[i].want, 0,
                      what + " before row " + std::to_string(j));
    }

    if (!nullFirst_) return;
    std::vector<Argument> nothing = arguments_;
    for (std::size_t p = 0; p < arguments_.size(); ++p) {
        if (!arguments_[p].isPointer()) nothing[p] = number(-1);
        if (!arguments_[p].isPointer() || arguments_[p].isOptional) continue;
        nothing[p] = null();

        std::vector<Argument> withNull = arguments_;
        withNull[p] = null();
        const std::string what = "argument " + std::to_string(p) + " null";
        check(withNull, zspStsNullPtrErr, 0, what);
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            std::vector<Argument> both = apply(withNull, rows_[i]);
            both[p] = null();
            check(both, zspStsNullPtrErr, 0, what + " before row " + std::to_string(i));
        }
    }
    check(nothing, zspStsNullPtrErr, 0, "nothing valid");
}

std::vector<Contract>& contracts()
{
    static std::vector<Contract> all;
    return all;
}

bool addContracts(std::vector<Contract> more)
{
    for (Contract& c : more)
        contracts().push_back(std::move(c));
    return true;
}

} // namespace zsp::test
