#ifndef TVSECURITYBOOKMARK_H
#define TVSECURITYBOOKMARK_H

// Lasting permission to reach a file or folder the user picked, for
// systems that hand out access by bookmark (a sandboxed program keeps it in
// a system parameter). This platform has no such bookmarks: a program
// reaches what its user can, so storing makes none and opening has
// nothing to open.

#include <string>

// Makes a bookmark of path and keeps it in the system parameter key.
void tv_store_security_bookmark(const std::string& key, const std::string& path);
// Opens the access the bookmark in key gives; the path it names, or empty.
std::string tv_access_security_bookmark(const std::string& key);

#endif // TVSECURITYBOOKMARK_H
