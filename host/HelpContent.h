#pragma once

#include <string>
#include <variant>
#include <vector>

namespace velotrine {

// All texts are UTF-8.

/// A paragraph.
struct HelpBody
{
    std::string text;
    bool operator==(const HelpBody&) const = default;
};

/// A control's name above what it does.
struct HelpParamRow
{
    std::string name;
    std::string description;
    bool operator==(const HelpParamRow&) const = default;
};

/// A paragraph in a tinted box.
struct HelpTip
{
    std::string text;
    bool operator==(const HelpTip&) const = default;
};

using HelpContentItem = std::variant<HelpBody, HelpParamRow, HelpTip>;

/// One page of the help window behind its title card.
struct HelpContentPage
{
    std::string navLabel; ///< on the page's segment
    std::string title;
    std::vector<HelpContentItem> items; ///< from the top down
};

/// The pages in the order of their segments.
[[nodiscard]] const std::vector<HelpContentPage>& helpContentPages();

} // namespace velotrine
