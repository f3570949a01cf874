# tv_add_layer_check()
# Called last in the top CMakeLists.txt, when every target and link is
# known. Writes build/tvlayers.cmake, which lists each target of the build
# with its folder, its sources and its links as the CMake files give them,
# and adds the test that holds the tree to them (cmake/check_layers.cmake):
# a file may include a header only of its own target or of a target that
# it links, and no framework target links a program's target.

# Every target below dir, in the order the folders were added.
function(tv_collect_targets dir out)
  get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(subdirs DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
  foreach(sub IN LISTS subdirs)
    tv_collect_targets(${sub} more)
    list(APPEND targets ${more})
  endforeach()
  set(${out} ${targets} PARENT_SCOPE)
endfunction()

function(tv_add_layer_check)
  if(NOT TV_TESTS)
    return()
  endif()
  tv_collect_targets(${CMAKE_SOURCE_DIR} all)
  set(manifest "${CMAKE_BINARY_DIR}/tvlayers.cmake")
  set(text "# Written by cmake/TVLayers.cmake at configure time.\n")
  set(kept "")
  foreach(target IN LISTS all)
    get_target_property(type ${target} TYPE)
    if(NOT type MATCHES "^(STATIC_LIBRARY|SHARED_LIBRARY|OBJECT_LIBRARY|INTERFACE_LIBRARY|EXECUTABLE)$")
      continue()
    endif()
    list(APPEND kept ${target})
    get_target_property(dir ${target} SOURCE_DIR)
    # Sources as the target names them; a generator expression (another
    # target's objects) has no file of its own to check.
    set(sources "")
    if(NOT type STREQUAL "INTERFACE_LIBRARY")
      get_target_property(listed ${target} SOURCES)
      foreach(source IN LISTS listed)
        if(source MATCHES "\\$<" OR NOT source MATCHES "\\.(cpp|h|mm)$")
          continue()
        endif()
        get_filename_component(source "${source}" ABSOLUTE BASE_DIR "${dir}")
        # Generated sources (resources, moc) are the build's, not the tree's.
        string(FIND "${source}" "${CMAKE_BINARY_DIR}/" inBuild)
        string(FIND "${source}" "${CMAKE_SOURCE_DIR}/" inTree)
        if(inTree EQUAL 0 AND NOT inBuild EQUAL 0)
          list(APPEND sources "${source}")
        endif()
      endforeach()
      get_target_property(links ${target} LINK_LIBRARIES)
    else()
      set(links "")
    endif()
    get_target_property(interface ${target} INTERFACE_LINK_LIBRARIES)
    foreach(var links interface)
      if(NOT ${var})
        set(${var} "")
      endif()
    endforeach()
    string(APPEND text
      "list(APPEND TV_TARGETS [[${target}]])\n"
      "set([[TV_DIR_${target}]] [[${dir}]])\n"
      "set([[TV_SOURCES_${target}]] [[${sources}]])\n"
      "set([[TV_LINKS_${target}]] [[${links}]])\n"
      "set([[TV_INTERFACE_${target}]] [[${interface}]])\n")
  endforeach()
  file(WRITE "${manifest}" "${text}")

  add_test(NAME LayerCheck.IncludesFollowLinks
    COMMAND ${CMAKE_COMMAND} -DTV_SOURCE_DIR=${CMAKE_SOURCE_DIR} -DTV_MANIFEST=${manifest}
            -P ${CMAKE_SOURCE_DIR}/cmake/check_layers.cmake)
  set_tests_properties(LayerCheck.IncludesFollowLinks PROPERTIES LABELS core)
endfunction()
