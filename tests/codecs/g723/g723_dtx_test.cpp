// Activity decision and silence descriptors of G.723.1 against the reference's traces.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const Argument kVad = state(sizeof(ZspG723VadState), [](void* s) {
    ZspG723VadState fresh;
    zspsVADInit_G723(&fresh);
    std::memcpy(s, &fresh, sizeof fresh);
});
const Argument kSid = state(sizeof(ZspG723SidState), [](void* s) {
    ZspG723SidState fresh;
    zspsSIDInit_G723(&fresh);
    std::memcpy(s, &fresh, sizeof fresh);
});

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVADInit_G723), {state(sizeof(ZspG723VadState))}),
    Contract(ZSP_NAMED(zspsVAD_G723_16s), {words(240), number(0), kVad, out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsSIDInit_G723), {state(sizeof(ZspG723SidState))}),
    Contract(ZSP_NAMED(zspsSIDUpdate_G723_16s), {words(44), words(4), kSid}),
    Contract(ZSP_NAMED(zspsSIDEncode_G723_16s),
             {number(1), number(1), words(10), out<std::int16_t>(10), out<std::int16_t>(10),
              asOutput(frameArgument()), kSid}),
});

static_assert(sizeof(ZspG723VadState) == 44 && sizeof(ZspG723SidState) == 136 &&
              sizeof(ZspG723Frame) == 80);

TEST(G723Dtx, Traces)
{
    ZspG723VadState vad;
    ZspG723SidState sid;
    zspsVADInit_G723(&vad);
    zspsSIDInit_G723(&sid);
    Words lsp(zsp::g723::kLspMean.begin(), zsp::g723::kLspMean.end()), sidLsp(10);
    bool afterSpeech = true;
    std::size_t updates = 0, pauses = 0;
    for (const TracedFrame& t : traced("63dtx", "encode")) {
        Words corr, shifts;
        for (std::size_t k = 0; k < 4; ++k) {
            const Words acf = t.words("acf", k);
            corr.insert(corr.end(), acf.begin(), acf.end());
            shifts.push_back(t.word("acf_shift", k));
        }
        zspsSIDUpdate_G723_16s(corr.data(), shifts.data(), &sid);
        std::int16_t active = -1;
        expectEqual(Words(vad.noiseLpc, vad.noiseLpc + 10), t.words("vad_noise_lpc"), "filter");
        zspsVAD_G723_16s(t.words("hp").data(), t.value("sine_detector") < 0, &vad, &active);
        EXPECT_EQ(active, t.word("vad"));
        EXPECT_EQ(vad.adaptation, t.word("vad_aen"));
        EXPECT_EQ(vad.energy, t.value("vad_energy"));
        EXPECT_EQ(vad.noise, t.value("vad_noise_level"));
        EXPECT_EQ(vad.count, t.word("vad_vcnt"));
        EXPECT_EQ(vad.hangover, t.word("vad_hcnt"));
        vad.lags[2] = t.words("open_loop_lag")[0];
        vad.lags[3] = t.words("open_loop_lag")[1];
        if (active != 0) {
            lsp = t.words("quantised_lsp");
            afterSpeech = true;
            continue;
        }
        ++pauses;
        ZspG723Frame f{};
        zspsSIDEncode_G723_16s(afterSpeech, vad.adaptation == 0, lsp.data(), vad.noiseLpc,
                               sidLsp.data(), &f, &sid);
        EXPECT_EQ(f.type == zspG723Sid, t.value("frame_type") == 2);
        EXPECT_EQ(sid.energies[0], t.word("sid_ener"));
        expectEqual(Words(sid.corr, sid.corr + 44), t.words("sid_acf"), "correlations");
        expectEqual(Words(sid.shifts, sid.shifts + 4), t.words("sid_acf_shift"), "shifts");
        expectEqual(Words(sid.filter, sid.filter + 11), t.words("sid_rc"), "filter");
        EXPECT_EQ(sid.filterShift, t.word("sid_rc_shift"));
        EXPECT_EQ(sid.index, t.word("sid_gain_index"));
        expectEqual(sidLsp, t.words("sid_lsp"), "pairs");
        if (f.type == zspG723Sid) {
            ++updates;
            EXPECT_EQ(f.sidGain, t.word("sid_gain_index"));
        }
        lsp = sidLsp;
        afterSpeech = false;
    }
    EXPECT_GE(updates, 1u);
    EXPECT_GT(pauses, updates);
}

} // namespace
