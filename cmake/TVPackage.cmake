# The Debian package of the install (make deb, from build-release/):
# what AppTarvelloMaths/desktop installs, under /usr, with the shared
# libraries it links as its dependencies, found by dpkg-shlibdeps. The
# desktop, file type and icon caches are refreshed by the triggers of
# the packages that own them, so the package needs no scripts of its own.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvello-maths)
# The program's release, as "tarvello-maths --version" gives it
# (AppMaths::identity); make deb-check holds the two together.
set(CPACK_PACKAGE_VERSION 2.0.0)
set(CPACK_PACKAGE_CONTACT "The Tarvello Maths developers <maths@tarvello.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "arithmetic drill for a child, set by a parent")
# The long description as plain paragraphs: CPack indents it and marks
# the blank line between them for the control file.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Tarvello Maths is a desktop arithmetic drill. The parent defines exercises
(times tables, division, adding, taking away, and a repeat of what went
wrong); the child types the answers into a column of questions and races
the best time of each exercise. Every finished exercise brings a new
animal picture.

Everything lives in one file that is saved automatically, backed up and
recovered after a crash. The package also holds tvdb, a command-line tool
that looks into the program's files.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION education)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://tarvello.org/maths")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
include(CPack)
