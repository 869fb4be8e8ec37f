# Compiler settings that every target of the project shares.
add_library(morvane_options INTERFACE)
target_include_directories(morvane_options INTERFACE ${CMAKE_SOURCE_DIR})
# Qt's macros `signals`, `slots` and `emit` would take those words from everybody.
target_compile_definitions(morvane_options INTERFACE QT_NO_KEYWORDS)
# -ffp-contract=off: the colour arithmetic has one right answer, on every CPU.
target_compile_options(morvane_options INTERFACE -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -ffp-contract=off)
if(MORVANE_WERROR)
  target_compile_options(morvane_options INTERFACE -Werror)
endif()
if(MORVANE_SANITIZE)
  target_compile_options(morvane_options INTERFACE -fsanitize=${MORVANE_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all -O1
    # GCC takes the sanitizers' own instructions for uses of uninitialised values.
    -Wno-maybe-uninitialized)
  target_link_options(morvane_options INTERFACE -fsanitize=${MORVANE_SANITIZE})
endif()

# morvane_library(NAME SOURCES... LINK libraries...)
function(morvane_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC morvane_options Threads::Threads ${ARG_LINK} PRIVATE ${ARG_PRIVATE})
endfunction()

# morvane_test(NAME SOURCES... LINK libraries... [TIMEOUT seconds] [COST seconds] [LABELS labels...] [PRECOMPILE headers...]): a
# GoogleTest program in CTest, one CTest test for the program, so that its fixtures are set up once.
function(morvane_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT;COST" "SOURCES;LINK;LABELS;PRECOMPILE" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gmock GTest::gtest_main)
  list(LENGTH ARG_SOURCES count)
  if(count GREATER 2)  # fewer take less time by themselves
    target_precompile_headers(${name} PRIVATE <gmock/gmock.h> ${ARG_PRECOMPILE})
  endif()
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
  if(ARG_COST)
    set_tests_properties(${name} PROPERTIES COST ${ARG_COST})
  endif()
endfunction()

# Tests that draw: without a display and without a GPU. Qt's functions have no frame pointers; lsan.supp tells the one
# leak of its own by the innermost few.
set(MORVANE_WINDOW_ENVIRONMENT
  "QT_QPA_PLATFORM=offscreen;QT_QUICK_BACKEND=software;ASAN_OPTIONS=fast_unwind_on_malloc=0:malloc_context_size=12")
