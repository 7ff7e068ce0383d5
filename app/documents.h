// Where this program's own documents are.
#pragma once

#include <string>

namespace shell {

// The path of a document such as "listings.md", where it is installed, or in the
// source tree.
std::string DocumentPath(const std::string& name);

}  // namespace shell
