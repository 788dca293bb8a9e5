#include "ui/ButtonOutlet.h"

namespace skyflare {

ButtonOutlet::ButtonOutlet()
{
    connect(this, &LabelOutlet::textChanged, this, &ButtonOutlet::accessibleNameChanged);
}

void ButtonOutlet::setEnabled(bool isEnabled)
{
    if (isEnabled_ == isEnabled)
        return;
    isEnabled_ = isEnabled;
    emit enabledChanged();
}

void ButtonOutlet::setSymbol(std::string_view name)
{
    symbol_ = QString::fromUtf8(name);
    emit symbolChanged();
}

void ButtonOutlet::setAccessibleName(std::string_view utf8)
{
    accessibleName_ = QString::fromUtf8(utf8);
    emit accessibleNameChanged();
}

} // namespace skyflare
