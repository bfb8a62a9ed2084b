# Every target of the project is compiled the same way: warnings are errors, the root is the
# include folder, and the sanitizers of the chosen preset apply to all of it.
add_library(marbelot_flags INTERFACE)
target_include_directories(marbelot_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(marbelot_flags INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc>)
target_compile_options(marbelot_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror
  # Each new SDK declares more of AppKit deprecated, for systems older than the oldest to run on, too.
  $<$<COMPILE_LANGUAGE:OBJCXX>:-Wno-error=deprecated-declarations>
  -fvisibility=hidden
  # GCC 12 sees overlapping copies in plain assignments of strings (its bug 105329).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(MARBELOT_SANITIZE)
  target_compile_options(marbelot_flags INTERFACE
    -fsanitize=${MARBELOT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
    # Between the checks GCC loses sight of what a variant holds.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(marbelot_flags INTERFACE -fsanitize=${MARBELOT_SANITIZE})
endif()

# marbelot_room(NAME SOURCES … LINK …): one room, one static library named marbelot_NAME.
function(marbelot_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINK" ${ARGN})
  add_library(marbelot_${name} STATIC ${ROOM_SOURCES})
  target_link_libraries(marbelot_${name} PUBLIC marbelot_flags ${ROOM_LINK})

  # The same sources once more for tests that count what the code does (tests/support/work.h).
  add_library(marbelot_${name}_counted OBJECT EXCLUDE_FROM_ALL
    $<TARGET_PROPERTY:marbelot_${name},SOURCES>)
  target_link_libraries(marbelot_${name}_counted PUBLIC marbelot_flags ${ROOM_LINK})
  target_compile_definitions(marbelot_${name}_counted PRIVATE
    $<TARGET_PROPERTY:marbelot_${name},COMPILE_DEFINITIONS>)
  target_compile_options(marbelot_${name}_counted PRIVATE -fsanitize-coverage=trace-pc)
  # The linter would read every source twice.
  set_target_properties(marbelot_${name}_counted PROPERTIES EXPORT_COMPILE_COMMANDS OFF)
endfunction()

# marbelot_test(NAME [SERIAL] SOURCES … LINK …): one GoogleTest program, found case by case by CTest.
# SERIAL: its cases need the machine for themselves, because they copy or type at a given pace.
function(marbelot_test name)
  cmake_parse_arguments(TEST "SERIAL" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE marbelot_flags ${TEST_LINK} GTest::gtest GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE MARBELOT_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  if(MARBELOT_BACKEND STREQUAL macos)
    # As a whole: a program on AppKit takes longer to start than its cases to run.
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ${TEST_SERIAL} TIMEOUT 300)
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES RUN_SERIAL ${TEST_SERIAL})
  endif()
endfunction()

# marbelot_wayland_protocol(NAME FILE): the code for a Wayland protocol, made from its description,
# as a library named marbelot_NAME with FILE's headers, for clients (.h) and compositors (.server.h).
function(marbelot_wayland_protocol name file)
  find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
  cmake_path(GET file STEM protocol)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/wayland)
  file(MAKE_DIRECTORY ${folder})
  set(code)
  set(tasks private-code client-header server-header)
  set(suffixes c h server.h)
  foreach(task suffix IN ZIP_LISTS tasks suffixes)
    add_custom_command(OUTPUT ${folder}/${protocol}.${suffix}
      DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${file}
      COMMAND ${WAYLAND_SCANNER} ${task} ${CMAKE_CURRENT_SOURCE_DIR}/${file}
        ${folder}/${protocol}.${suffix})
    list(APPEND code ${folder}/${protocol}.${suffix})
  endforeach()
  add_library(marbelot_${name} STATIC ${code})
  target_include_directories(marbelot_${name} SYSTEM PUBLIC ${folder})
  # C that is not ours to lint.
  set_target_properties(marbelot_${name} PROPERTIES EXPORT_COMPILE_COMMANDS OFF)
endfunction()
