# tv_render_svg(<svg> <output> <width> <height>)
#
# The build step that renders one SVG source with tvsvgrender to <output>
# (PNG, or JPEG for ".jpg"), again only when the SVG or the renderer
# changes. Something must depend on <output> for it to run.
function(tv_render_svg svg out width height)
  get_filename_component(svg "${svg}" ABSOLUTE)
  get_filename_component(dir "${out}" DIRECTORY)
  file(RELATIVE_PATH shown "${CMAKE_BINARY_DIR}" "${out}")
  add_custom_command(OUTPUT "${out}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${dir}"
    COMMAND $<TARGET_FILE:tvsvgrender> "${svg}" "${out}" ${width} ${height}
    DEPENDS "${svg}" tvsvgrender
    COMMENT "Rendering ${shown}"
    VERBATIM)
endfunction()

# tv_add_svg_images(<target> NAME <resource name> PREFIX <prefix>
#                   IMAGES <svg> <resource path> <width> <height> ...)
#
# Renders each SVG source with tvsvgrender into the build tree, at the
# resource path under <prefix> (":<prefix>/<resource path>"), and packs the
# results into <target> through a generated .qrc. Each picture is rendered
# again only when its SVG (or the renderer) changes. The target's own code
# brings the pack in with Q_INIT_RESOURCE(<resource name>).
function(tv_add_svg_images target)
  cmake_parse_arguments(A "" "NAME;PREFIX" "IMAGES" ${ARGN})
  list(LENGTH A_IMAGES count)
  math(EXPR rest "${count} % 4")
  if(count EQUAL 0 OR NOT rest EQUAL 0)
    message(FATAL_ERROR "tv_add_svg_images: IMAGES takes groups of <svg> <path> <width> <height>")
  endif()

  set(root "${CMAKE_CURRENT_BINARY_DIR}/${A_NAME}")
  set(outputs "")
  set(entries "")
  math(EXPR last "${count} - 1")
  foreach(i RANGE 0 ${last} 4)
    math(EXPR j1 "${i} + 1")
    math(EXPR j2 "${i} + 2")
    math(EXPR j3 "${i} + 3")
    list(GET A_IMAGES ${i} svg)
    list(GET A_IMAGES ${j1} path)
    list(GET A_IMAGES ${j2} width)
    list(GET A_IMAGES ${j3} height)
    set(out "${root}/${path}")
    tv_render_svg("${svg}" "${out}" ${width} ${height})
    list(APPEND outputs "${out}")
    string(APPEND entries "    <file>${path}</file>\n")
  endforeach()

  # Written through configure_file so that an unchanged list keeps its
  # time stamp and the pack is not rebuilt at every configure.
  set(qrc "${root}/${A_NAME}.qrc")
  file(WRITE "${qrc}.in"
    "<!DOCTYPE RCC>\n<RCC version=\"1.0\">\n  <qresource prefix=\"${A_PREFIX}\">\n${entries}  </qresource>\n</RCC>\n")
  configure_file("${qrc}.in" "${qrc}" COPYONLY)

  set(cpp "${CMAKE_CURRENT_BINARY_DIR}/qrc_${A_NAME}.cpp")
  add_custom_command(OUTPUT "${cpp}"
    COMMAND Qt5::rcc --name ${A_NAME} --no-compress --output "${cpp}" "${qrc}"
    DEPENDS "${qrc}" ${outputs}
    COMMENT "Packing ${A_NAME}"
    VERBATIM)
  target_sources(${target} PRIVATE "${cpp}")
  set_source_files_properties("${cpp}" PROPERTIES SKIP_AUTOMOC ON SKIP_AUTOUIC ON)
endfunction()
