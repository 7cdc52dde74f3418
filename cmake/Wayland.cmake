# Code for Wayland's protocols, out of their descriptions.

find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
pkg_get_variable(WAYLAND_PROTOCOLS wayland-protocols pkgdatadir)
# Debian keeps those of wlroots among the sources of a library that speaks them.
file(GLOB_RECURSE wlr_description /usr/share/wlr-protocols/unstable/wlr-layer-shell-unstable-v1.xml
  /usr/share/cargo/registry/wayland-protocols-*/wlr-protocols/unstable/wlr-layer-shell-unstable-v1.xml)
if(NOT wlr_description)
  message(FATAL_ERROR "The descriptions of wlroots' protocols are missing (librust-wayland-protocols-dev)")
endif()
list(GET wlr_description -1 wlr_description)
get_filename_component(WLR_PROTOCOLS ${wlr_description} DIRECTORY)
find_path(PLASMA_PROTOCOLS plasma-window-management.xml PATHS /usr/share/plasma-wayland-protocols NO_DEFAULT_PATH REQUIRED)

# tavrine_wayland_protocols(NAME descriptions…): a library with the code of these; `<wayland/DESCRIPTION.h>` declares it.
function(tavrine_wayland_protocols name)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
  file(MAKE_DIRECTORY ${folder}/wayland)
  foreach(description ${ARGN})
    get_filename_component(stem ${description} NAME_WE)
    # An argument that is called as a word of C++ gets another name.
    add_custom_command(OUTPUT ${folder}/wayland/${stem}.h ${folder}/${stem}.c
      COMMAND ${WAYLAND_SCANNER} client-header ${description} ${folder}/${stem}.h.in
      COMMAND sed "s/\\bnamespace\\b/name_space/g" ${folder}/${stem}.h.in > ${folder}/wayland/${stem}.h
      COMMAND ${WAYLAND_SCANNER} private-code ${description} ${folder}/${stem}.c
      DEPENDS ${description} VERBATIM)
    list(APPEND sources ${folder}/wayland/${stem}.h ${folder}/${stem}.c)
  endforeach()
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON AUTOMOC OFF)
  target_include_directories(${name} SYSTEM PUBLIC ${folder})
  target_link_libraries(${name} PUBLIC PkgConfig::WAYLAND)
endfunction()
