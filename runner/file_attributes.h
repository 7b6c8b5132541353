// What a file has beside its name and its bytes.
#pragma once

#include <filesystem>

namespace runner {

// Gives a new file what the file has whose place it takes: owner and group where the system lets
// it, rights, access list, and attributes of the user. The set-user, set-group and sticky bits are
// dropped: they were given to other bytes. Where the group can't be kept, the new group gets no
// right that the others hadn't; where the access list can't be kept, the owner alone has rights.
// Gives 0 or an errno; where there is no such file, nothing is done.
int KeepAttributes(const std::filesystem::path& from, int to);

}  // namespace runner
