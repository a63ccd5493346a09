// Makes random calls of described exports and finds what is not as described.
//
// A valid call is made twice, on different blocks at different misalignments: by the export, and by
// its definition or, where there is none, by the export again. Both must give the same. A call that
// the description rejects must return the first failing check's status and write nothing. After
// every call inputs and everything around the blocks are as before, and so is the processor.
#pragma once

#include "tests/fuzz/blocks.hpp"
#include "tests/fuzz/choices.hpp"
#include "tests/fuzz/description.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace zsp::fuzz {

/// How calls are made.
enum class Manner {
    looking,    // with a look at the processor afterwards, which takes turns between threads
    concurrent, // on any thread
    sharing,    // the valid calls alone, whose results are not compared: others use the state too
};

class Caller {
  public:
    explicit Caller(Manner manner) : manner_(manner) {}

    /// Sets a state up, if the family has any, and makes up to `most` calls on it.
    void session(const Family& family, const Choices& choices, int most);

    /// The same on a state that the caller has set up.
    void session(const Family& family, const Choices& choices, int most, const SetUp& setUp,
                 void* state);

    long long calls() const { return calls_; }
    long long validCalls() const { return validCalls_; }
    /// A hash of all that valid calls have given.
    std::uint64_t hash() const { return hash_; }
    /// The first thing that was not as described; empty when there was none.
    const std::string& fault() const { return fault_; }
    /// The call that is being made, for whoever reports a crash.
    std::string current() const;

  private:
    struct Session {
        const Family& family;
        SetUp setUp;
        std::byte* state; // for the export
        std::byte* twin;  // for the definition
        std::size_t bytes;
    };
    enum class Use { read, written, any };
    struct Pair {
        std::byte *ours, *twins; // what the export and what the definition works on
        std::size_t bytes;
        Use use;
        Element element;
        bool isFresh; // holds nothing that a call may read
    };

    const Description& anyExport(const Family& family);
    void call(const Description& d, Session& session);
    bool drawArguments(const Description& d, Call& call, bool valid);
    double draw(const Argument& a, const Parameter& p, bool cautious);
    double spoil(const Argument& a, const Parameter& p);
    void placeBlocks(const Description& d, const Session& session, Call& ours, Call& twins,
                     bool passes);
    Pair placePair(const Argument& a, const Parameter& p, std::size_t elements);
    void placeVectors(const Argument& a, const Parameter& p, std::size_t count, std::size_t each,
                      Bound& ours, Bound& twins);
    void fill(Element element, std::span<std::byte> bytes);
    void judgeFailed(const Check& check, const Session& session);
    void judgePassed(const Description& d, const Session& session, const Call& twins);
    void found(const std::string& what);

    Choices choices_{0};
    Manner manner_;
    Blocks blocks_;
    std::vector<Pair> pairs_; // of the current call
    std::vector<std::byte> stateBefore_;
    long long calls_ = 0, validCalls_ = 0;
    std::uint64_t hash_ = 0xcbf2'9ce4'8422'2325;
    std::string fault_;
    const Description* description_ = nullptr;
    const Call* call_ = nullptr;
};

} // namespace zsp::fuzz
