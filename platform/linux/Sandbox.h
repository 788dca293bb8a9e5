#pragma once

namespace skyflare {

/// Whether the program runs in a sandbox (Flatpak), where portals stand for the desktop's services. Any
/// thread.
bool isSandboxed();

} // namespace skyflare
