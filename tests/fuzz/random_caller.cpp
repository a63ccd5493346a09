// Random calls of every export, valid and invalid, until a number of calls is reached or something
// is not as described. A session has a seed of its own, with which it can be repeated alone.
//
//   zspsc_random_caller [--calls N] [--seed S] [--family NAME]   100000 calls, seed 1, all families
//   zspsc_random_caller --family NAME --session S                the one session with this seed
//   zspsc_random_caller --described                              is every export described?

#include "tests/fuzz/caller.hpp"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace zsp::fuzz;

const char* const kExports[] = {
#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
#include "core/exports.inc"
};

/// Every export but the one without arguments, once.
int checkDescribed()
{
    std::multiset<std::string> missing(std::begin(kExports), std::end(kExports));
    missing.erase("zspscGetLibVersion");
    int faults = 0;
    for (const Family& family : families())
        for (const Description& d : family.exports)
            if (const auto it = missing.find(d.name); it != missing.end())
                missing.erase(it);
            else
                faults += std::fprintf(stderr, "%s: no export, or twice\n", d.name.c_str()) > 0;
    for (const std::string& name : missing)
        faults += std::fprintf(stderr, "%s: not described in tests/fuzz/describe/FAMILY.cpp\n",
                               name.c_str()) > 0;
    return faults;
}

Caller* caller = nullptr;
std::string session;

/// The last words of a crash.
void say(int signal)
{
    const std::string text = "in " + caller->current() + "\nrepeat: " + session + "\n";
    [[maybe_unused]] const auto written = write(2, text.data(), static_cast<unsigned>(text.size()));
    if (signal) _exit(128 + signal);
}

/// Whether the last session found a fault, which is said then.
bool isFaulty()
{
    if (caller->fault().empty()) return false;
    std::fprintf(stderr, "%s\nrepeat: %s\n", caller->fault().c_str(), session.c_str());
    return true;
}

struct Options {
    long long calls = 100'000;
    std::uint64_t seed = 1;
    bool single = false;
    bool list = false;
    std::string family;
};

Options parse(int argc, char** argv)
{
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        const auto value = [&] { return i + 1 < argc ? argv[++i] : ""; };
        if (option == "--described")
            o.list = true;
        else if (option == "--calls")
            o.calls = std::atoll(value());
        else if (option == "--family")
            o.family = value();
        else if (option == "--seed")
            o.seed = std::strtoull(value(), nullptr, 0);
        else if (option == "--session")
            o.seed = std::strtoull(value(), nullptr, 0), o.single = true;
    }
    return o;
}

} // namespace

#ifdef __SANITIZE_ADDRESS__
extern "C" void __sanitizer_set_death_callback(void (*)());
#endif

int main(int argc, char** argv)
{
    const Options o = parse(argc, argv);
    if (o.list) return checkDescribed() > 0;
    std::vector<const Family*> chosen; // the more often, the more exports a family has
    for (const Family& family : families())
        if (o.family.empty() || o.family == family.name)
            chosen.insert(chosen.end(), family.exports.size(), &family);
    if (chosen.empty()) return std::fprintf(stderr, "no family %s\n", o.family.c_str()), 2;

    static Caller theCaller(Manner::looking);
    caller = &theCaller;
#ifdef __SANITIZE_ADDRESS__
    __sanitizer_set_death_callback([] { say(0); });
#else
    std::signal(SIGSEGV, say);
    std::signal(SIGFPE, say);
#endif
    for (std::uint64_t i = 0; o.single ? i == 0 : caller->calls() < o.calls; ++i) {
        Choices choices(o.single ? o.seed : o.seed * 0x9e37'79b9'7f4a'7c15 + i);
        const Family& family =
            *chosen[size(o.single ? 0 : choices.below(static_cast<int>(chosen.size())))];
        const auto own = choices.bits<std::uint64_t>();
        session = std::string(argv[0]) + " --family " + family.name + " --session " +
                  std::to_string(o.single ? o.seed : own);
        caller->session(family, Choices(o.single ? o.seed : own), 24);
        if (isFaulty()) return 1;
    }
    std::printf("%lld calls, %lld of them valid\n", caller->calls(), caller->validCalls());
}
