// Level control: samples and record after each part of alc/runs.txt.

#include "conformance/families.hpp"
#include "zspsc/alc_g169.h"

#include <cstdio>

namespace zsp::conformance {

namespace {

float number(const std::string& text)
{
    float value = 0;
    if (std::sscanf(text.c_str(), "%f", &value) != 1)
        throw Fault("alc/runs.txt: no number " + text);
    return value;
}

/// The parts in one go, since each starts from the record of the one before; a check per part.
class Model {
  public:
    explicit Model(const Vectors& vectors)
        : input_(vectors.words("alc/levels.in.s16")), want_(vectors.words("alc/levels.out.s16")),
          records_(vectors.read<std::uint8_t>("alc/levels.states.bin"))
    {
        if (input_.size() != want_.size()) throw Fault("alc: the signals differ in length");
        require(zspsALCInit_G169_16s(&state_), "the initialisation");
    }

    void set(const std::vector<std::string>& run)
    {
        if (run[0] == "gain" && run.size() == 2)
            require(zspsALCSetGain_G169_16s(number(run[1]), &state_), "the gain");
        else if (run[0] == "level" && run.size() == 3)
            require(zspsALCSetLevel_G169_16s(number(run[1]), number(run[2]), &state_), "the level");
        else if (run[0] == "alpha" && run.size() == 2)
            state_.alpha = number(run[1]);
        else
            throw Fault("alc/runs.txt: no operation " + run[0]);
    }

    void level(const std::string& blocks)
    {
        const float count = number(blocks);
        if (!(count >= 1 && count < 1e6F)) throw Fault("alc/runs.txt: no blocks " + blocks);
        const auto length = 8 * static_cast<std::size_t>(count);
        if (length > input_.size() - position_) throw Fault("the signal is at its end");
        Words got(length);
        require(zspsALC_G169_16s(&input_[position_], got.data(), static_cast<std::int32_t>(length),
                                 &state_),
                "the call");
        const std::span want(&want_[position_], length);
        position_ += length;
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(&state_);
        if (records_.size() - seen_ < sizeof state_) throw Fault("the records are at their end");
        const std::span record(&records_[seen_], sizeof state_);
        seen_ += sizeof state_;
        requireEqual(got, want, "samples");
        requireEqual(std::span(bytes, sizeof state_), record, "record, bytes");
    }

    void requireEnd() const
    {
        if (seen_ != records_.size() || position_ != input_.size())
            throw Fault("the vectors go on behind the last part");
    }

  private:
    Words input_, want_;
    std::vector<std::uint8_t> records_;
    std::size_t position_ = 0, seen_ = 0;
    ZspAlcState_G169 state_{};
};

} // namespace

void checkLevelControl(const Vectors& vectors, Checks& checks)
{
    Model model(vectors);
    for (const auto& run : vectors.runs("alc/runs.txt")) {
        if (run[0] == "blocks" && run.size() == 3)
            checks.add(run[2], [&] { model.level(run[1]); });
        else
            model.set(run);
    }
    model.requireEnd();
}

} // namespace zsp::conformance
