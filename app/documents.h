// Where this program's own documents are.
#pragma once

#include <string>

namespace shell {

// The path of a document such as "listings.md", where it is installed; from the source tree, where
// it stands there.
std::string DocumentPath(const std::string& name);

}  // namespace shell
