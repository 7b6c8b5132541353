// Files that keep their inode while their bytes change.
#pragma once

#include <filesystem>
#include <string>

namespace runner {

// Writes the bytes of one file, which are on the disk already, over those of another, flushes them
// with their time, and drops the set-user, set-group and sticky bits, which were given to other
// bytes. Signals wait meanwhile. At every moment the old bytes or the new ones lie whole on the
// disk: at first in the file, then in a copy beside it, at last in the file again.
//
// Gives 0 or an errno. After an error the old bytes are back in the file. Where they can't be
// brought back, and after a kill or a power cut, the copy stays; `copyLeft` is its name then.
int WriteOver(const std::filesystem::path& from, const std::filesystem::path& to,
              std::string* copyLeft);

}  // namespace runner
