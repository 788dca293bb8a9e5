#include "screens/settings/SettingsTableView.h"

#include <utility>

namespace skyflare {

void SettingsTableView::reloadData()
{
    const auto before = std::exchange(cells_, {}); // until the view has let go
    shown_.clear();
    for (int row = 0; row < delegate_->numberOfRowsInSection(0); ++row) {
        cells_.push_back(delegate_->cellForRowAtIndexPath(row));
        shown_.append(cells_.back().get());
    }
    emit reloaded();
}

} // namespace skyflare
