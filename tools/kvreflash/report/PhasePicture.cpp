#include "PhasePicture.h"

#include "Texts.h"

#include <algorithm>
#include <map>

namespace {

constexpr int columnWidth = 240;
constexpr int rowHeight = 26;
constexpr int boxHeight = 20;
constexpr int gap = 30;
constexpr int headHeight = 34;
/// In columns of a terminal.
/// @{
constexpr std::size_t longestName = 34;
constexpr std::size_t longestTip = 200;
/// @}
/// More elements of one phase, and more phases, are only counted.
/// @{
constexpr std::size_t mostBoxes = 40;
constexpr std::size_t mostPhases = 40;
/// @}

using KvNReflasher::KvTPlannedElement;
using Phases = std::map<std::uint32_t, std::vector<const KvTPlannedElement*>>;

/// `text` with the characters that mean something in markup escaped.
std::string withoutMarkup(const std::string& text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '&':
            result += "&amp;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += character;
            break;
        }
    }
    return result;
}

std::string attribute(const char* name, const std::string& value) {
    std::string text = " ";
    return text.append(name).append("=\"").append(markupText(value)).append("\"");
}

std::string attribute(const char* name, int value) {
    return attribute(name, std::to_string(value));
}

/// The name in one line, with a mark if it is cut.
std::string shortened(const std::string& name, std::size_t limit) {
    const Beginning beginning = beginningOf(name, limit);
    return beginning.shown + (beginning.isCut ? "\xE2\x80\xA6" : "");
}

std::string textAt(int x, int y, const char* style, const std::string& content) {
    return "<text" + attribute("x", x) + attribute("y", y) + attribute("class", std::string(style)) + ">" +
           markupText(content) + "</text>\n";
}

std::string box(const ReportData& report, const KvTPlannedElement& element, int x, int y) {
    const std::string outcome = report.wordFor(element);
    return "<rect" + attribute("x", x) + attribute("y", y) + attribute("width", columnWidth) +
           attribute("height", boxHeight) + attribute("rx", 4) +
           attribute("class", std::string(report.styleOf(element))) + "><title>" +
           markupText(shortened(element.displayName, longestTip) + ": " + outcome) + "</title></rect>\n" +
           textAt(x + 6, y + 14, "name", shortened(element.displayName, longestName));
}

std::string column(const ReportData& report, std::uint32_t phase, const std::vector<const KvTPlannedElement*>& elements,
                   int x) {
    std::string text = textAt(x, 20, "phase", "Phase " + std::to_string(phase));
    int y = headHeight;
    for (std::size_t index = 0; index < std::min(elements.size(), mostBoxes); ++index) {
        text += box(report, *elements[index], x, y);
        y += rowHeight;
    }
    if (elements.size() > mostBoxes) {
        text += textAt(x, y + 14, "name", "... and " + std::to_string(elements.size() - mostBoxes) + " more");
    }
    return text;
}

Phases phasesOf(const ReportData& report) {
    Phases phases;
    if (report.plan != nullptr) {
        for (const KvTPlannedElement& element : report.plan->elements) {
            if (element.phase) {
                phases[*element.phase].push_back(&element);
            }
        }
    }
    return phases;
}

/// From one phase to the next.
std::string arrow(int x) {
    std::string path = "M";
    path.append(std::to_string(x + 6)).append(" 15 h16 m-5 -4 l5 4 l-5 4");
    return "<path" + attribute("class", "arrow") + attribute("d", path) + "/>\n";
}

} // namespace

std::string markupText(const std::string& text) {
    return withoutMarkup(visibleInLine(text));
}

std::string markupLines(const std::string& text) {
    return withoutMarkup(visibleInLines(text));
}

std::string phasePicture(const ReportData& report) {
    const Phases phases = phasesOf(report);
    if (phases.empty()) {
        return {};
    }
    std::size_t rows = 0;
    std::size_t shown = 0;
    int x = 0;
    std::string columns;
    for (const auto& [phase, elements] : phases) {
        columns += x != 0 ? arrow(x - gap) : "";
        if (shown++ == mostPhases) {
            columns += textAt(x, 20, "phase", "... and " + std::to_string(phases.size() - mostPhases) + " more phases");
            x += columnWidth + gap;
            break;
        }
        columns += column(report, phase, elements, x);
        x += columnWidth + gap;
        rows = std::max(rows, std::min(elements.size(), mostBoxes + 1));
    }
    const int width = x - gap;
    const int height = headHeight + static_cast<int>(rows) * rowHeight;
    // A margin of one for the lines around the boxes.
    const std::string size = std::to_string(width + 2) + " " + std::to_string(height);
    return "<svg" + attribute("xmlns", "http://www.w3.org/2000/svg") + attribute("role", "img") +
           attribute("aria-label", "The phases of the update") + attribute("width", width) +
           attribute("viewBox", "-1 0 " + size) + ">\n" + columns + "</svg>\n";
}
