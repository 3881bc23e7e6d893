// Passwords that do not come on the command line, where other users of the machine can see them.
#ifndef ZELVANE_TOOLS_ZELCTL_SECRET_H
#define ZELVANE_TOOLS_ZELCTL_SECRET_H

#include <string>

// The first line of standard input, without echo when that is a terminal. Throws Failed when there is none.
std::string ReadSecretFromInput();
// The first line of a file.
std::string ReadSecretFromFile(std::string const& path);

#endif
