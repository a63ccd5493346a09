// A report: one HTML file with its style and pictures inside.
#pragma once

#include "tools/zsp/report/chart.hpp"

#include <string>
#include <vector>

namespace zsp::host {

class Report {
  public:
    /// `summary` says in a sentence or two what was done to what.
    Report(std::string title, std::string summary);

    /// A heading; with more than one, links to them stand at the top.
    void section(const std::string& title, const std::string& text = "");
    /// A figure worth showing by itself.
    struct Tile {
        std::string value, label;
    };
    void tiles(const std::vector<Tile>& tiles);
    /// The first row is the heading; columns from the second on are aligned as numbers.
    using Rows = std::vector<std::vector<std::string>>;
    void table(const Rows& rows, const std::string& note = "");
    /// The same of words, which are aligned as such and broken where the page is narrow.
    void words(const Rows& rows, const std::string& note = "");
    void chart(const std::string& title, const Chart& chart, const std::string& note = "");
    /// Charts below one another in one frame.
    void charts(const std::string& title, std::span<const Chart> charts,
                const std::string& note = "");
    /// A player for a sound: a file beside the report or a data URI.
    struct Player {
        std::string source, label;
    };
    void players(const std::vector<Player>& players);

    void write(const std::string& path) const;

  private:
    void addTable(const std::string& attributes, const Rows& rows, const std::string& note);

    std::string title_, summary_, body_;
    std::vector<std::string> sections_;
};

} // namespace zsp::host
