#include "screens/main/SelectionContainer.h"

namespace skyflare {

void SelectionContainer::addOption(std::string_view title)
{
    options_.push_back(std::make_unique<ButtonOutlet>());
    options_.back()->setText(title);
    shown_.append(options_.back().get());
}

} // namespace skyflare
