// Writes a report as one HTML page.

#include "tools/zsp/report/report.hpp"

#include "tools/zsp/io/files.hpp"
#include "tools/zsp/io/text.hpp"
#include "zspsc/types.h"

#include <utility>

namespace zsp::host {

namespace {

constexpr const char* kStyle = R"css(
:root { color-scheme: light dark;
  --page: #f6f5f2; --card: #ffffff; --ink: #1d2025; --soft: #5d636e; --rule: #e4e2dc;
  --c1: #2462d1; --c2: #cc4a12; --c3: #0a8263; --c4: #8238c8; --c5: #a87408; --c6: #c9306a; }
@media (prefers-color-scheme: dark) { :root {
  --page: #15171b; --card: #1e2126; --ink: #eceae4; --soft: #a2a7b0; --rule: #343941;
  --c1: #79aaff; --c2: #ff9a62; --c3: #43cda2; --c4: #c79bff; --c5: #e3b64b; --c6: #ff83ac; } }
body { margin: 0; background: var(--page); color: var(--ink); -webkit-text-size-adjust: 100%;
  font: 16px/1.55 system-ui, "Segoe UI", Roboto, "DejaVu Sans", sans-serif; }
main { max-width: 1020px; margin: 0 auto; padding: 40px 20px 64px; }
h1 { font-size: 30px; line-height: 1.2; margin: 0 0 8px; letter-spacing: -.01em; }
h2 { font-size: 21px; margin: 44px 0 6px; }
h3 { font-size: 15px; margin: 0 0 2px; }
p { margin: 0 0 12px; max-width: 74ch; color: var(--soft); }
nav { display: flex; flex-wrap: wrap; gap: 4px 20px; font-size: 14px; }
a { color: var(--c1); }
.tiles { display: grid; grid-template-columns: repeat(auto-fit, minmax(150px, 1fr)); gap: 12px;
  margin: 20px 0; }
.tile, .card { background: var(--card); border: 1px solid var(--rule); border-radius: 10px; }
.tile { padding: 12px 16px; }
.tile b { display: block; font-size: 24px; font-weight: 600; line-height: 1.25; }
.tile span { color: var(--soft); font-size: 13px; }
.card { padding: 16px 18px 12px; margin: 14px 0; }
.card p { font-size: 13.5px; line-height: 1.45; margin: 0 0 10px; max-width: 110ch; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; font-size: 15px; }
th { text-align: right; font-weight: 600; color: var(--soft); font-size: 13px; }
td { text-align: right; }
th:first-child, td:first-child { text-align: left; }
th, td { padding: 7px 10px; border-bottom: 1px solid var(--rule); white-space: nowrap; }
tr:last-child td { border-bottom: 0; }
.words th, .words td { text-align: left; white-space: normal; vertical-align: top; }
.words td + td:not(:last-child) { white-space: nowrap; }
.words td:last-child { overflow-wrap: anywhere; }
.players { display: grid; grid-template-columns: repeat(auto-fit, minmax(280px, 1fr)); gap: 10px 18px; }
.players label { display: block; font-size: 13px; color: var(--soft); }
audio { width: 100%; height: 36px; }
figure { margin: 0 0 8px; }
figcaption { display: flex; flex-wrap: wrap; gap: 2px 14px; align-items: center; color: var(--soft);
  font-size: 13px; line-height: 1.3; padding: 0 62px 5px; }
figcaption b { color: var(--ink); font-weight: 600; } figcaption em { font: inherit; font-weight: 400; color: var(--soft); }
figcaption span { white-space: nowrap; }
figcaption i { display: inline-block; width: 16px; margin-right: 6px; vertical-align: middle; }
i.fill { height: 10px; border-radius: 1.5px; } i.stroke { height: 3px; } i.faint { opacity: .3; }
i.dashed { -webkit-mask: linear-gradient(90deg, #000 60%, #0000 0) 0 0/6px; mask: linear-gradient(90deg, #000 60%, #0000 0) 0 0/6px; }
.plot { margin: 0 62px; }
.plot > svg { display: block; width: 100%; overflow: visible; }
svg text { font: 12px system-ui, "Segoe UI", Roboto, "DejaVu Sans", sans-serif; fill: var(--ink); }
svg text.tick { fill: var(--soft); font-variant-numeric: tabular-nums; }
svg text.label { fill: var(--soft); }
.end { text-anchor: end; } .middle { text-anchor: middle; } .scale { transform: translateX(8px); }
path, .frame { vector-effect: non-scaling-stroke; }
.grid { stroke: var(--rule); fill: none; } .frame { stroke: var(--soft); }
.line { fill: none; stroke-width: 1.8; stroke-linejoin: round; stroke-linecap: round; }
.dashed.line { stroke-dasharray: 6 4; }
.mark { stroke: var(--ink); stroke-width: 1.2; stroke-dasharray: 4 3; }
.marks { display: none; }
.shade { opacity: .14; } .area { opacity: .9; }
.c0 { stroke: var(--ink); } .f0 { fill: var(--ink); } .b0 { background: var(--ink); }
.c1 { stroke: var(--c1); } .f1 { fill: var(--c1); } .b1 { background: var(--c1); }
.c2 { stroke: var(--c2); } .f2 { fill: var(--c2); } .b2 { background: var(--c2); }
.c3 { stroke: var(--c3); } .f3 { fill: var(--c3); } .b3 { background: var(--c3); }
.c4 { stroke: var(--c4); } .f4 { fill: var(--c4); } .b4 { background: var(--c4); }
.c5 { stroke: var(--c5); } .f5 { fill: var(--c5); } .b5 { background: var(--c5); }
.c6 { stroke: var(--c6); } .f6 { fill: var(--c6); } .b6 { background: var(--c6); }
@media (max-width: 640px) {
  main { padding: 24px 10px 48px; } h1 { font-size: 25px; }
  .card { padding: 12px 10px 8px; } figcaption { padding: 0 0 5px; } .plot { margin: 0 40px 0 44px; }
  .odd, .marktext { display: none; } .marks { display: block; }
  .tiles { grid-template-columns: repeat(auto-fit, minmax(130px, 1fr)); } .tile b { font-size: 20px; }
  th, td { padding: 6px 8px; } table { font-size: 13.5px; } }
footer { margin-top: 48px; font-size: 13px; color: var(--soft); }
)css";

std::string paragraph(const std::string& text)
{
    return text.empty() ? "" : "<p>" + escaped(text) + "</p>\n";
}

} // namespace

Report::Report(std::string title, std::string summary)
    : title_(std::move(title)), summary_(std::move(summary))
{
}

void Report::section(const std::string& title, const std::string& text)
{
    sections_.push_back(title);
    body_ +=
        format("<h2 id=\"s%zu\">", sections_.size()) + escaped(title) + "</h2>\n" + paragraph(text);
}

void Report::tiles(const std::vector<Tile>& tiles)
{
    body_ += "<div class=\"tiles\">";
    for (const Tile& tile : tiles)
        body_ += "<div class=\"tile\"><b>" + escaped(tile.value) + "</b><span>" +
                 escaped(tile.label) + "</span></div>";
    body_ += "</div>\n";
}

void Report::table(const Rows& rows, const std::string& note)
{
    addTable("", rows, note);
}

void Report::words(const Rows& rows, const std::string& note)
{
    addTable(" class=\"words\"", rows, note);
}

void Report::addTable(const std::string& attributes, const Rows& rows, const std::string& note)
{
    body_ += "<div class=\"card\"><div class=\"scroll\"><table" + attributes + ">";
    const char* cell = "th";
    for (const auto& row : rows) {
        body_ += "<tr>";
        for (const std::string& text : row)
            body_ += std::string("<") + cell + ">" + escaped(text) + "</" + cell + ">";
        body_ += "</tr>\n";
        cell = "td";
    }
    body_ += "</table></div>" + paragraph(note) + "</div>\n";
}

void Report::chart(const std::string& title, const Chart& chart, const std::string& note)
{
    charts(title, {&chart, 1}, note);
}

void Report::charts(const std::string& title, std::span<const Chart> charts,
                    const std::string& note)
{
    body_ += "<div class=\"card\"><h3>" + escaped(title) + "</h3>" + paragraph(note);
    for (const Chart& chart : charts)
        body_ += chart.html() + "\n";
    body_ += "</div>\n";
}

void Report::players(const std::vector<Player>& players)
{
    body_ += "<div class=\"card players\">";
    for (const Player& player : players)
        body_ += "<label>" + escaped(player.label) + "<audio controls preload=\"none\" src=\"" +
                 escaped(player.source) + "\"></audio></label>";
    body_ += "</div>\n";
}

void Report::write(const std::string& path) const
{
    std::string contents;
    for (std::size_t i = 0; i < sections_.size() && sections_.size() > 1; ++i)
        contents += format("<a href=\"#s%zu\">", i + 1) + escaped(sections_[i]) + "</a>";
    OutputFile file(path);
    file.write("<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
               "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
               escaped(title_) + "</title><style>" + kStyle + "</style></head>\n<body><main><h1>" +
               escaped(title_) + "</h1>\n" + paragraph(summary_) +
               (contents.empty() ? "" : "<nav>" + contents + "</nav>\n") + body_ +
               "<footer>Written by zsp with library version " +
               escaped(zspscGetLibVersion()->versionText) + ".</footer></main></body></html>\n");
    file.commit();
}

} // namespace zsp::host
