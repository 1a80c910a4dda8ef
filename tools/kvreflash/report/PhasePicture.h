#pragma once

#include "Report.h"

#include <string>

/// The phases of the update from left to right, each with its elements in the colour of their outcome, as an inline SVG
/// picture; empty when no element is to be updated.
[[nodiscard]] std::string phasePicture(const ReportData& report);

/// `text` (UTF-8) in one line as HTML and SVG can hold it: markup characters escaped, control characters made visible.
[[nodiscard]] std::string markupText(const std::string& text);
/// The same with its line ends as they are.
[[nodiscard]] std::string markupLines(const std::string& text);
