#include "ReleaseTable.h"

#include "Action.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace updatecycle
{
namespace
{
using Row = std::array<std::string, 6>;

std::string dateText(__int64 seconds)
{
    return seconds == 0 ? "any time" : std::string(static_cast<const char*>(TimetToStr(&seconds))).substr(0, 16);
}

std::string remarks(const CRelease& release)
{
    std::string text = release.GetMarketingName();
    if (release.IsPreInstallOnly() != 0)
        text += ", pre-install only";
    if (release.IsNoDownload() != 0)
        text += ", no download";
    return text;
}

Row rowOf(const CRelease& release)
{
    return {std::to_string(release.GetId()),
            release.GetName(),
            release.GetFullVersion(),
            actionWord(release.GetAction()),
            dateText(release.GetActivationDate()),
            remarks(release)};
}

Row rowOf(const CComponent& component)
{
    return {"  " + std::to_string(component.GetId()),
            std::string("  ") + component.GetName(),
            component.GetFullVersion(),
            actionWord(component.GetAction()),
            component.IsShared() != 0 ? "shared" : "",
            component.GetSourceLocation()};
}

/// Columns are as wide as their longest text; the last one takes what it needs.
void print(const std::vector<Row>& rows)
{
    std::array<std::size_t, 6> widths{};
    for (const Row& row : rows)
        for (std::size_t column = 0; column + 1 < row.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    for (const Row& row : rows)
    {
        std::string line = " ";
        for (std::size_t column = 0; column < row.size(); ++column)
        {
            line += ' ' + row[column];
            line.append(widths[column] - std::min(widths[column], row[column].size()) + 1, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::printf("%s\n", line.c_str());
    }
}
} // namespace

void printTable(const ReleaseList& releases)
{
    std::vector<Row> rows = {{"ID", "Release", "Version", "Action", "Active from", "Name"},
                             {"", "  Component", "", "", "", "Source"}};
    releases.forEach(
        [&](const CRelease& release)
        {
            rows.push_back(rowOf(release));
            const auto& components = release.GetComponentList();
            for (POSITION position = components.GetHeadPosition(); position != nullptr;)
                rows.push_back(rowOf(*components.GetNext(position)));
        });
    print(rows);
}
} // namespace updatecycle
