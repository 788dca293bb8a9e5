#include "ui/SwitchOutlet.h"

namespace skyflare {

void SwitchOutlet::setOn(bool isOn)
{
    if (isOn_ == isOn)
        return;
    isOn_ = isOn;
    emit onChanged();
}

void SwitchOutlet::toggled()
{
    setOn(!isOn_);
    emit valueChanged();
}

} // namespace skyflare
