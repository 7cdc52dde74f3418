# A build under sanitizers: what is compiled with them, and what every program carries for them.

# The tests' own code is compiled as ever under the address sanitizer: it is two thirds of all, and what it does wrong to the
# program's objects the program's code notices. Threads are another matter: an access that is not seen hides a race or invents one.
define_property(TARGET PROPERTY TAVRINE_UNCHECKED INITIALIZE_FROM_VARIABLE HERE_TAVRINE_UNCHECKED)
set(checked $<NOT:$<BOOL:$<TARGET_PROPERTY:TAVRINE_UNCHECKED>>>)
if(TAVRINE_SANITIZE MATCHES thread)
  set(checked 1)
endif()

target_link_options(tavrine_options INTERFACE -fsanitize=${TAVRINE_SANITIZE} -Wl,--compress-debug-sections=zlib)
# What the undefined behaviour's sanitizer knows of each line is full of addresses: at a fixed place they are there already, which
# else are 40 MB of relocations to be done by each start, and read by compositors that look a program up by its bytes.
if(NOT TAVRINE_SANITIZE MATCHES thread)
  target_link_options(tavrine_options INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()
# Sensible stacks; asserts; and the library's containers look at every index. The code that the sanitizers add makes one warning
# see what is not there.
set(checks -O1 -g1 -UNDEBUG -fsanitize=${TAVRINE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
  -D_GLIBCXX_ASSERTIONS -DTAVRINE_SANITIZED -Wno-error=maybe-uninitialized)
target_compile_options(tavrine_options INTERFACE "$<${checked}:${checks}>")

# tavrine_suppressions(FILE VARIABLE): the lines of a file of suppressions as a text of C++.
function(tavrine_suppressions file variable)
  set(path ${PROJECT_SOURCE_DIR}/cmake/sanitizers/${file})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  file(STRINGS ${path} lines REGEX "^[^#]")
  list(JOIN lines "\\n" text)
  set(${variable} "\"${text}\\n\"" PARENT_SCOPE)
endfunction()
tavrine_suppressions(leaks.supp leaks)
tavrine_suppressions(threads.supp races)

# Tests look for leaks as they end. The programs never do: they end at once, with what they hold, and behind a wall nothing can look.
foreach(kind programs tests)
  add_library(tavrine_sanitized_${kind} OBJECT ${PROJECT_SOURCE_DIR}/cmake/sanitizers/Defaults.cpp)
  set_target_properties(tavrine_sanitized_${kind} PROPERTIES AUTOMOC OFF)
  target_include_directories(tavrine_sanitized_${kind} PRIVATE ${PROJECT_SOURCE_DIR}/src)
  set(looks_for_leaks 0)
  if(kind STREQUAL tests)
    set(looks_for_leaks 1)
  endif()
  target_compile_definitions(tavrine_sanitized_${kind} PRIVATE
    TAVRINE_FINDINGS="${PROJECT_BINARY_DIR}/findings" TAVRINE_LEAKS="${looks_for_leaks}"
    TAVRINE_SUPPRESSED_LEAKS=${leaks} TAVRINE_SUPPRESSED_RACES=${races})
endforeach()
set(executable $<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>)
set(looking $<BOOL:$<TARGET_PROPERTY:TAVRINE_LOOKS_FOR_LEAKS>>)
target_sources(tavrine_options INTERFACE
  $<$<AND:${executable},${looking}>:$<TARGET_OBJECTS:tavrine_sanitized_tests>>
  $<$<AND:${executable},$<NOT:${looking}>>:$<TARGET_OBJECTS:tavrine_sanitized_programs>>)

# What the toolkit hands from thread to thread, for every program that has the toolkit; the small helpers have none.
if(TAVRINE_SANITIZE MATCHES thread)
  add_library(tavrine_handed_over OBJECT ${PROJECT_SOURCE_DIR}/cmake/sanitizers/HandedOver.cpp)
  set_target_properties(tavrine_handed_over PROPERTIES AUTOMOC OFF)
  target_link_libraries(tavrine_handed_over PRIVATE Qt6::Core)
  set_property(TARGET Qt6::Core APPEND PROPERTY INTERFACE_SOURCES $<${executable}:$<TARGET_OBJECTS:tavrine_handed_over>>)
endif()
