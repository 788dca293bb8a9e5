import QtQuick
import Skyflare.Settings

/// What the rows have in common.
Column {
    required property SettingsTableView table // that hears of taps
}
