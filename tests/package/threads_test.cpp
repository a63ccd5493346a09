// Calls on different states run at the same time: eight threads get what a single thread gets, in
// all families. The thread sanitizer sees here that the library shares nothing; that it would see a
// state which two threads share, shared_state_test.cmake shows.

#include "tests/fuzz/caller.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zsp::fuzz;

/// What the random calls of all families give, and the first fault.
struct Given {
    std::vector<std::uint64_t> hashes;
    std::string fault;
};

void callAll(Given& given)
{
    Caller caller(Manner::concurrent);
    for (const Family& family : families()) {
        for (std::uint64_t seed = 0; seed < 6; ++seed)
            caller.session(family, Choices(seed), 24);
        given.hashes.push_back(caller.hash());
    }
    given.fault = caller.fault();
}

TEST(Threads, StatesAreIndependent)
{
    Given alone;
    callAll(alone);
    EXPECT_EQ(alone.fault, "");

    std::vector<Given> results(8);
    std::vector<std::thread> threads;
    for (Given& result : results)
        threads.emplace_back([&result] { callAll(result); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Given& result : results) {
        EXPECT_EQ(result.fault, "");
        for (std::size_t i = 0; i < families().size(); ++i)
            EXPECT_EQ(result.hashes.at(i), alone.hashes.at(i)) << families()[i].name;
    }
}

} // namespace
