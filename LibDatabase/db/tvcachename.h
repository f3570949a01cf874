#ifndef TVCACHENAME_H
#define TVCACHENAME_H

// get_cache_name: where a database keeps its side files (base, index, lock).
//
// On a platform that is neither desktop macOS nor iOS, and without force,
// path itself. Otherwise the application's cache directory, "/", then (on
// a desktop) every "/" and "\" of path but a last character, in order, and
// one more "/" if there was any, and last path's base name (no extension).
// The run of separators means nothing to the file system, so two databases
// of one base name share their cache files; that is how it has always been,
// and existing caches depend on it.
//
// The cache directory is the application object's, or Qt's cache location
// when there is no application object (tools and tests).

#include <string>

std::string get_cache_name(const std::string& path, bool force);

#endif // TVCACHENAME_H
