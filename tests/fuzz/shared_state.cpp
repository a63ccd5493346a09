// What the thread sanitizer has to report: two threads that call exports of a family on one state.
//
//   zspsc_shared_state           lists the families that have a state
//   zspsc_shared_state FAMILY    shares a state of this family

#include "tests/fuzz/caller.hpp"

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

int main(int argc, char** argv)
{
    using namespace zsp::fuzz;
    for (const Family& family : families()) {
        if (!family.hasState()) continue;
        if (argc < 2) {
            std::puts(family.name.c_str());
        } else if (family.name == argv[1]) {
            Choices choices(1);
            const SetUp setUp = family.draw(choices);
            std::vector<std::byte> state(size(family.bytes.of(Call(setUp, 0))));
            family.init(setUp, state.data());
            const auto run = [&](std::uint64_t seed) {
                Caller(Manner::sharing).session(family, Choices(seed), 20, setUp, state.data());
            };
            std::thread other(run, 2);
            run(3);
            other.join();
        }
    }
}
