#pragma once

#include "Report.h"

#include <string>

/// The phases of the update from left to right, each with its elements in the colour of their outcome, as an inline SVG
/// picture; empty when no element is to be updated.
[[nodiscard]] std::string phasePicture(const KvTReport& report);

/// `text` (UTF-8) as HTML and SVG can hold it: markup characters escaped, control characters made visible.
[[nodiscard]] std::string markupText(const std::string& text);
