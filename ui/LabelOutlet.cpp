#include "ui/LabelOutlet.h"

namespace skyflare {

void LabelOutlet::setText(std::string_view utf8)
{
    auto text = QString::fromUtf8(utf8);
    if (text_ == text)
        return;
    text_ = std::move(text);
    emit textChanged();
}

} // namespace skyflare
