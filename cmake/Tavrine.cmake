# What every target of the project shares: warnings, sanitizers and the precompiled Qt headers.

add_library(tavrine_options INTERFACE)
target_include_directories(tavrine_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(tavrine_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_URL_CAST_FROM_STRING
  TAVRINE_VERSION="${PROJECT_VERSION}")
target_compile_options(tavrine_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wimplicit-fallthrough
  -fno-plt -fvisibility=hidden)
if(TAVRINE_WARNINGS_AS_ERRORS)
  target_compile_options(tavrine_options INTERFACE -Werror)
endif()
if(TAVRINE_SANITIZE)
  include(cmake/Sanitizers.cmake)
endif()
if(TAVRINE_FUZZERS)
  # libFuzzer follows what is reached; what is wrong ends the run. The toolkit's own objects are without types for the sanitizer.
  set(checks -fsanitize=address,undefined -fno-sanitize=vptr,function)
  target_compile_options(tavrine_options INTERFACE -fsanitize=fuzzer-no-link ${checks} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavrine_options INTERFACE ${checks})
endif()
target_link_options(tavrine_options INTERFACE -Wl,--as-needed -Wl,-O1 -Wl,-z,now)

# The headers that nearly every source takes, compiled once for all libraries: each copy would cost seconds and 120 MB.
# Written once: a newer one would have everything compiled anew, whenever the build is configured.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/headers.cpp CONTENT "// The headers are all there is.\n")
set(shared_headers <QObject> <QString> <QHash> <functional> <memory> <optional> <vector>)
add_library(tavrine_headers STATIC ${PROJECT_BINARY_DIR}/headers.cpp)
target_link_libraries(tavrine_headers PUBLIC tavrine_options Qt6::Core)
target_precompile_headers(tavrine_headers PRIVATE ${shared_headers})

# Views take the widgets as well: a third of what each of them costs.
add_library(tavrine_view_headers STATIC ${PROJECT_BINARY_DIR}/headers.cpp)
target_link_libraries(tavrine_view_headers PUBLIC tavrine_options Qt6::Core Qt6::Widgets)
target_precompile_headers(tavrine_view_headers PRIVATE ${shared_headers}
  <algorithm> <chrono> <QVariant> <QMap> <QSet> <QPainter> <QPaintEvent> <QApplication> <QScreen> <QWidget>)

# tavrine_library(NAME [VIEWS] [SOURCES …] [PUBLIC libs…] [PRIVATE libs…]): one static library for one folder, with widgets where it is
# one of views.
function(tavrine_library name)
  cmake_parse_arguments(ARG "VIEWS" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC tavrine_options Qt6::Core ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  set(headers tavrine_headers)
  if(ARG_VIEWS)
    set(headers tavrine_view_headers)
    set_target_properties(${name} PROPERTIES UNITY_BUILD OFF) # each view has margins and rows of its own, called the same
  endif()
  target_precompile_headers(${name} REUSE_FROM ${headers})
endfunction()

# tavrine_plugin(NAME SOURCES … LIBS … [FOLDER folder]): one port's adapter that is loaded when it is first used, so that
# the libraries it needs stay out of the resident program until then. FOLDER is one within that of the plugins.
function(tavrine_plugin name)
  cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;LIBS" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tavrine_options Qt6::Core Qt6::Gui tavrine_ports ${ARG_LIBS})
  set_target_properties(${name} PROPERTIES PREFIX ""
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${ARG_FOLDER})
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tavrine/plugins/${ARG_FOLDER})
endfunction()
