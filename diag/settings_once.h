// The one reading of the settings, at the first report of the process.
#pragma once

namespace kv::diag {

/// Reads the settings unless gfReadReg says that they have been read, which it says as soon as somebody reads them: a
/// report from inside the reading, or of another thread meanwhile, does not read again and does not wait.
void readSettingsOnce();

/// Reads the settings now.
void readSettings();

/// Whether a thread is inside the reading, so that what it sets as the log's name may not be whole.
bool settingsAreBeingRead() noexcept;

}  // namespace kv::diag
