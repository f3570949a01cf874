# cmake -DTV_SOURCE_DIR=<tree> -DTV_MANIFEST=<build>/tvlayers.cmake -P check_layers.cmake
#
# Holds the tree to its CMake files (make check runs it as a test):
#
#   1. A file may include a header of the tree only when the header's
#      target is its own target, or one that its target links, directly or
#      through what the linked targets pass on to their users. What a
#      library links only for itself (PRIVATE, $<LINK_ONLY:...>) gives its
#      users no right to its headers.
#   2. No framework target (under Lib* or TestSupport) links a program's
#      target (under AppTarvelloMaths), in any way.
#
# A header belongs to every target with a source in its folder, and a file
# may use the rights of any target that compiles it (a header, of any
# target of its folder). A header in a folder that no target compiles
# belongs to nothing and may not be included. Includes that are not files
# of the tree (the toolkit's, generated .moc files) are not checked.

cmake_minimum_required(VERSION 3.16)
include(${TV_MANIFEST})

# The targets of the build that a list of link items names. Without
# link_only, what a library links only for itself is left out.
function(tv_named_targets items link_only out)
  set(names "")
  foreach(item IN LISTS items)
    if(item MATCHES "^::@")
      continue()
    endif()
    if(item MATCHES "^\\$<LINK_ONLY:" AND NOT link_only)
      continue()
    endif()
    string(REGEX REPLACE "\\$<(LINK_ONLY|TARGET_FILE|LINK_LIBRARY:[A-Z_]+,)" "" item "${item}")
    string(REPLACE ">" "" item "${item}")
    if(item IN_LIST TV_TARGETS)
      list(APPEND names ${item})
    endif()
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()

# target, what it links, and what those pass on (all of it with link_only).
function(tv_closure target link_only out)
  set(seen ${target})
  tv_named_targets("${TV_LINKS_${target}}" ${link_only} queue)
  while(queue)
    list(POP_FRONT queue next)
    if(next IN_LIST seen)
      continue()
    endif()
    list(APPEND seen ${next})
    tv_named_targets("${TV_INTERFACE_${next}}" ${link_only} more)
    list(APPEND queue ${more})
  endwhile()
  set(${out} ${seen} PARENT_SCOPE)
endfunction()

function(tv_folder path out)
  get_filename_component(folder "${path}" DIRECTORY)
  file(RELATIVE_PATH folder "${TV_SOURCE_DIR}" "${folder}")
  set(${out} "${folder}" PARENT_SCOPE)
endfunction()

set(problems "")

# Who owns each folder, who compiles each file, and what each may include.
set(folders "")
foreach(target IN LISTS TV_TARGETS)
  tv_closure(${target} FALSE RIGHTS_${target})
  foreach(source IN LISTS TV_SOURCES_${target})
    tv_folder("${source}" folder)
    list(APPEND OWNERS_${folder} ${target})
    list(APPEND COMPILERS_${source} ${target})
    list(APPEND folders "${folder}")
    list(APPEND files "${source}")
  endforeach()
endforeach()
list(REMOVE_DUPLICATES folders)
foreach(folder IN LISTS folders)
  list(REMOVE_DUPLICATES OWNERS_${folder})
  file(GLOB headers "${TV_SOURCE_DIR}/${folder}/*.h")
  foreach(header IN LISTS headers)
    set(COMPILERS_${header} ${OWNERS_${folder}})
    list(APPEND files "${header}")
  endforeach()
endforeach()
list(REMOVE_DUPLICATES files)

# Rule 1.
set(checked 0)
foreach(file IN LISTS files)
  set(allowed "")
  foreach(target IN LISTS COMPILERS_${file})
    list(APPEND allowed ${RIGHTS_${target}})
  endforeach()
  file(STRINGS "${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
  file(RELATIVE_PATH shown "${TV_SOURCE_DIR}" "${file}")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE "^[^\"]*\"([^\"]+)\".*$" "\\1" included "${line}")
    if(NOT EXISTS "${TV_SOURCE_DIR}/${included}")
      continue()
    endif()
    math(EXPR checked "${checked} + 1")
    tv_folder("${TV_SOURCE_DIR}/${included}" folder)
    if(NOT OWNERS_${folder})
      list(APPEND problems "${shown}: includes ${included}, which no target compiles")
      continue()
    endif()
    set(ok FALSE)
    foreach(owner IN LISTS OWNERS_${folder})
      if(owner IN_LIST allowed)
        set(ok TRUE)
        break()
      endif()
    endforeach()
    if(NOT ok)
      string(REPLACE ";" ", " owners "${OWNERS_${folder}}")
      string(REPLACE ";" ", " compilers "${COMPILERS_${file}}")
      list(APPEND problems
           "${shown} (${compilers}): includes ${included} of ${owners}, which it does not link")
    endif()
  endforeach()
endforeach()

# Rule 2.
foreach(target IN LISTS TV_TARGETS)
  file(RELATIVE_PATH dir "${TV_SOURCE_DIR}" "${TV_DIR_${target}}")
  if(NOT dir MATCHES "^(Lib[^/]*|TestSupport)(/|$)")
    continue()
  endif()
  tv_closure(${target} TRUE linked)
  foreach(other IN LISTS linked)
    file(RELATIVE_PATH otherDir "${TV_SOURCE_DIR}" "${TV_DIR_${other}}")
    if(otherDir MATCHES "^AppTarvelloMaths(/|$)")
      list(APPEND problems "${target} (${dir}) links ${other} of the program (${otherDir})")
    endif()
  endforeach()
endforeach()

list(LENGTH TV_TARGETS ntargets)
list(LENGTH files nfiles)
if(problems)
  list(LENGTH problems count)
  string(REPLACE ";" "\n  " text "${problems}")
  message(FATAL_ERROR "${count} break(s) of the layers:\n  ${text}\n"
                      "(see doc/architecture.md: a header's target must be linked to be included)")
endif()
message(STATUS "${nfiles} files of ${ntargets} targets, ${checked} includes: all follow the links")
