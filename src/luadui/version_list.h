// Version information of the host's files.
#pragma once

#include <string>

namespace luadui {

// `names` are files in the host's folder, separated by ';' (a name may begin with a separator). Answers an
// entry "original name|file date|product version" per file, in the same order and separated alike; a value
// that a file's version resource lacks is empty, as all are for a file without one.
std::string VersionList(const std::string& names);

}  // namespace luadui
