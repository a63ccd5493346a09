// The table of families with reference vectors.

#include "conformance/families.hpp"

namespace zsp::conformance {

std::span<const Family> families()
{
    static const Family kFamilies[] = {
        {"G.711", "ITU-T G.711", {"g726"}, checkG711},
        {"G.726", "ITU-T G.726", {"g726"}, checkG726},
        {"G.722", "ITU-T G.722", {"g722"}, checkG722},
        {"G.723.1", "ITU-T G.723.1", {"g723"}, checkG723},
        {"G.728", "ITU-T G.728", {"g728"}, checkG728},
        {"GSM full rate", "ETSI GSM 06.10", {"gsmfr"}, checkGsmFullRate},
        {"GSM-AMR", "3GPP TS 26.093, 26.094", {"gsmamr"}, checkGsmAmr},
        {"AMR-WB", "3GPP TS 26.173, 26.194", {"amrwb"}, checkAmrWb},
        {"G.729", "ITU-T G.729", {"g729", "math"}, checkG729},
        {"G.729 coder", "ITU-T G.729", {"g729codec"}, checkG729Coder},
        {"level control", "ITU-T G.169", {"alc"}, checkLevelControl},
    };
    return kFamilies;
}

std::vector<Check> checksOf(const Family& family, const Vectors& vectors)
{
    Checks checks;
    try {
        family.run(vectors, checks);
        if (checks.all().empty()) throw Fault("there is nothing to check");
    } catch (const Fault& fault) {
        checks.add("all", [&fault] { throw fault; });
    }
    return checks.all();
}

} // namespace zsp::conformance
