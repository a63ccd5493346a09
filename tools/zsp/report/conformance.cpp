// What came of the reference vectors, as text, JSON and a page.

#include "tools/zsp/report/conformance.hpp"

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/files.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/system/system.hpp"

#include "zspvoice.h"

#include <algorithm>
#include <cpuid.h>
#include <cstring>
#include <ctime>

namespace zsp::host {

namespace {

namespace fs = std::filesystem;

/// The processor as it names itself.
std::string processorName()
{
    char name[49] = {};
    for (unsigned int part = 0; part < 3; ++part) {
        unsigned int words[4] = {};
        if (!__get_cpuid(0x80000002U + part, &words[0], &words[1], &words[2], &words[3])) break;
        std::memcpy(name + 16 * static_cast<std::size_t>(part), words, 16);
    }
    std::string text = name;
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "unknown";
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// The file that calls of the library go to, whichever the loader chose.
std::string libraryFile()
{
    const fs::path file = libraryFileOf(reinterpret_cast<const void*>(&zspscGetLibVersion));
    return file.empty() ? "unknown" : file.string();
}

std::string now()
{
    const std::time_t seconds = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", std::gmtime(&seconds));
    return text;
}

std::string verdict(const FamilyResult& result)
{
    if (result.checks.empty()) return "no vectors";
    return result.passed == result.checks.size() ? "bit-exact" : "FAILED";
}

std::string ratio(const FamilyResult& result)
{
    return format("%zu of %zu", result.passed, result.checks.size());
}

/// As JSON wants text: quoted, without control characters.
std::string quoted(const std::string& text)
{
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') json += '\\';
        if (static_cast<unsigned char>(c) < 0x20)
            json += format("\\u%04x", c);
        else
            json += c;
    }
    return json + '"';
}

std::string jsonOf(const Conformance& result)
{
    std::string json = "{\n";
    const auto field = [&json](const char* name, const std::string& value) {
        json += format("  \"%s\": ", name) + value + ",\n";
    };
    field("library", quoted(result.library));
    field("libraryFile", quoted(result.file));
    field("voiceLibrary", quoted(result.voice));
    field("processor", quoted(result.processor));
    field("vectors", quoted(result.directory));
    field("time", quoted(result.time));
    field("passed", std::to_string(result.passed));
    field("total", std::to_string(result.total));
    field("files", std::to_string(result.files));
    json += "  \"families\": [";
    const char* before = "\n";
    for (const FamilyResult& family : result.families) {
        json += before + ("    {\"name\": " + quoted(family.family->name)) +
                ", \"standard\": " + quoted(family.family->standard) +
                format(", \"passed\": %zu, \"total\": %zu,\n     \"failures\": [", family.passed,
                       family.checks.size());
        const char* separator = "";
        for (const auto& check : family.checks) {
            if (check.fault.empty()) continue;
            json += separator + ("\n      {\"check\": " + quoted(check.name)) +
                    ", \"fault\": " + quoted(check.fault) + "}";
            separator = ",";
        }
        json += "]}";
        before = ",\n";
    }
    return json + "\n  ]\n}\n";
}

void writeText(const std::string& text, const std::string& path)
{
    OutputFile file(path);
    file.write(text);
    file.commit();
}

void writePage(const Conformance& result, const std::string& path)
{
    const bool all = result.passed == result.total && result.total > 0;
    Report report("Conformance",
                  all ? "The library gives what all reference vectors want."
                      : "The library does NOT give what the reference vectors want.");
    report.tiles({{format("%zu of %zu", result.passed, result.total), "checks passed"},
                  {format("%zu", result.files), "files of vectors"},
                  {result.library, "version of libzspsc"},
                  {result.voice, "version of libzspvoice"}});
    report.section("Families");
    Report::Rows rows = {{"Family", "Passed", "Result", "Standard"}};
    for (const FamilyResult& family : result.families)
        rows.push_back(
            {family.family->name, ratio(family), verdict(family), family.family->standard});
    report.words(rows, "A check is a run, a signal or a file of records: through the exports in "
                       "one call, in blocks of many lengths and in the shortest ones, every word "
                       "compared.");
    if (!all) {
        report.section("Failures");
        rows = {{"Check", "Fault"}};
        for (const FamilyResult& family : result.families)
            for (const auto& check : family.checks)
                if (!check.fault.empty())
                    rows.push_back(
                        {std::string(family.family->name) + ", " + check.name, check.fault});
        report.words(rows);
    }
    report.section("Where and what");
    report.words({{"This run", ""},
                  {"Processor", result.processor},
                  {"Library", result.file},
                  {"Vectors", result.directory},
                  {"Time", result.time}});
    report.write(path);
}

} // namespace

Conformance checkConformance(const fs::path& vectors, bool wantAll)
{
    Conformance result{.directory = vectors.string(),
                       .library = zspscGetLibVersion()->versionText,
                       .voice = format("%d.%d.%d", ZSPVOICE_VERSION_MAJOR, ZSPVOICE_VERSION_MINOR,
                                       ZSPVOICE_VERSION_PATCH),
                       .file = libraryFile(),
                       .processor = processorName(),
                       .time = now(),
                       .families = {}};
    const conformance::Vectors files(vectors);
    for (const conformance::Family& family : conformance::families()) {
        FamilyResult& part = result.families.emplace_back();
        part.family = &family;
        const bool there = std::ranges::any_of(family.folders, [&vectors](const auto& folder) {
            return fs::is_directory(vectors / folder);
        });
        if (there || wantAll) part.checks = checksOf(family, files);
        part.passed = static_cast<std::size_t>(std::ranges::count_if(
            part.checks, [](const auto& check) { return check.fault.empty(); }));
        result.passed += part.passed;
        result.total += part.checks.size();
    }
    result.files = files.seen().size();
    return result;
}

std::string textOf(const Conformance& result)
{
    std::string text = "library    " + result.library + ", " + result.file + "\nvoice      " +
                       result.voice + "\nprocessor  " + result.processor + "\nvectors    " +
                       result.directory + "\ntime       " + result.time + "\n\n";
    for (const FamilyResult& family : result.families) {
        text += format("%-14s %3zu of %3zu  %-10s  %s\n", family.family->name, family.passed,
                       family.checks.size(), verdict(family).c_str(), family.family->standard);
        for (const auto& check : family.checks)
            if (!check.fault.empty()) text += "    " + check.name + ": " + check.fault + '\n';
    }
    return text + format("%-14s %3zu of %3zu\n", "all", result.passed, result.total);
}

ConformanceWriter conformanceWriter(const std::string& path)
{
    const std::string kind = lowerCase(fs::path(path).extension().string());
    if (kind == ".html") return writePage;
    if (kind == ".json")
        return
            [](const Conformance& result, const std::string& to) { writeText(jsonOf(result), to); };
    if (kind == ".txt")
        return
            [](const Conformance& result, const std::string& to) { writeText(textOf(result), to); };
    throw UsageError("--report: " + path + " ends neither in .html nor in .json nor in .txt");
}

} // namespace zsp::host
