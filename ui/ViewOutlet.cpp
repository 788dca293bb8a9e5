#include "ui/ViewOutlet.h"

namespace skyflare {

void ViewOutlet::setHidden(bool isHidden)
{
    if (isHidden_ == isHidden)
        return;
    isHidden_ = isHidden;
    emit hiddenChanged();
}

void ViewOutlet::setAlpha(double alpha)
{
    if (alpha_ == alpha)
        return;
    alpha_ = alpha;
    emit alphaChanged();
}

} // namespace skyflare
