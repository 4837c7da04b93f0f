# How every target of this project is compiled, said once.

add_library(quorvel_flags INTERFACE)
target_compile_options(quorvel_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough)
# Files that are compiled together may each have a name that another one uses within; that is no mistake in tests.
target_compile_options(quorvel_flags INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:QUORVEL_SHADOWS>>>:-Wshadow>)
# At -O3 GCC 12 sees the first two in Qt's inlined containers (QHash of a variant, QHash of units), the third where a
# std::string is put together, and is wrong.
target_compile_options(quorvel_flags INTERFACE
    $<$<AND:$<CONFIG:Release>,$<CXX_COMPILER_ID:GNU>>:-Wno-maybe-uninitialized;-Wno-null-dereference;-Wno-restrict>)
target_compile_definitions(quorvel_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(QUORVEL_SANITIZE)
    target_compile_options(quorvel_flags INTERFACE -fsanitize=${QUORVEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(quorvel_flags INTERFACE -fsanitize=${QUORVEL_SANITIZE})
    # Asio has fences beside its locks; the thread sanitizer cannot see them and needs only the locks.
    target_compile_options(quorvel_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    # Clang 14 cannot lay out the check of function types for coroutines.
    target_compile_options(quorvel_flags INTERFACE $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
endif()

# quorvel_together(<target>...)
# Compiles the sources of these targets together, several at a time, where QUORVEL_UNITY says so.
function(quorvel_together)
    set_target_properties(${ARGV} PROPERTIES UNITY_BUILD ${QUORVEL_UNITY} UNITY_BUILD_BATCH_SIZE 12)
    # GCC takes what an included file keeps to itself for a mistake.
    if(QUORVEL_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        foreach(target ${ARGV})
            target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
        endforeach()
    endif()
endfunction()

# quorvel_library(<folder library> SOURCES <files> LINKS <targets>)
# One folder, one static library, one include directory: what a folder does not link it cannot include.
function(quorvel_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE quorvel_flags)
    quorvel_together(${name})
endfunction()

# Programs of heavy tests alone are built by the target heavy_tests and by no other.
add_custom_target(heavy_tests)

# quorvel_heavy(<target>...)
# Leaves these targets to heavy_tests, and to whatever needs them.
function(quorvel_heavy)
    set_target_properties(${ARGV} PROPERTIES EXCLUDE_FROM_ALL TRUE)
    add_dependencies(heavy_tests ${ARGV})
endfunction()

# quorvel_test_program(<name> SOURCES <files> LINKS <targets>)
function(quorvel_test_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINKS} quorvel_flags)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    quorvel_together(${name})
    set_target_properties(${name} PROPERTIES QUORVEL_SHADOWS ${QUORVEL_UNITY})
endfunction()

# quorvel_add_test(<tst_thing> COMMAND <words> LABELS <labels> TIMEOUT <seconds>)
# Registers it with CTest, by what tests of the desktop program need.
function(quorvel_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "COMMAND;LABELS")
    add_test(NAME ${name} COMMAND ${arg_COMMAND})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 60)
    endif()
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8"
        FAIL_REGULAR_EXPRESSION "qrc:/[^ ]*\\.qml:[0-9]+") # no test may leave a warning of the interface unread
    if("x11" IN_LIST arg_LABELS) # each waits for windows and programs; together they only make each other late
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK desktop)
    endif()
endfunction()

# quorvel_suite(<thingTests> TESTS <tst_thing>... HEAVY <tst_thing>... SOURCES <more files> LINKS <targets>
#               LABELS <labels> TIMEOUT <seconds of each>)
# Builds the tests of a folder, which end in QUORVEL_TEST, as one program, and registers each with CTest by its name.
function(quorvel_suite name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "TESTS;HEAVY;SOURCES;LINKS;LABELS")
    set(files ${arg_TESTS} ${arg_HEAVY})
    list(TRANSFORM files APPEND .cpp)
    quorvel_test_program(${name} SOURCES ${files} ${arg_SOURCES} LINKS quorvel_suite ${arg_LINKS})
    foreach(test ${arg_TESTS})
        quorvel_add_test(${test} COMMAND ${name} ${test} LABELS ${arg_LABELS} TIMEOUT ${arg_TIMEOUT})
    endforeach()
    foreach(test ${arg_HEAVY})
        quorvel_add_test(${test} COMMAND ${name} ${test} LABELS heavy TIMEOUT ${arg_TIMEOUT})
    endforeach()
endfunction()

# quorvel_test(<tst_thing> SOURCES <more files> LINKS <targets> LABELS <labels> TIMEOUT <seconds>)
# Builds tst_thing.cpp, which has a main() of its own, as a program and registers it with CTest.
function(quorvel_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LINKS;LABELS")
    quorvel_test_program(${name} SOURCES ${name}.cpp ${arg_SOURCES} LINKS Qt6::Test ${arg_LINKS})
    quorvel_add_test(${name} COMMAND ${name} LABELS ${arg_LABELS} TIMEOUT ${arg_TIMEOUT})
    if("heavy" IN_LIST arg_LABELS)
        quorvel_heavy(${name})
    endif()
endfunction()

# quorvel_server_test(<tst_thing> SOURCES <files> LINKS <targets> LABELS <labels> TIMEOUT <seconds>)
# Builds the tests of a folder of the backend service as one program, by GoogleTest and without Qt.
function(quorvel_server_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LINKS;LABELS")
    quorvel_test_program(${name} SOURCES ${arg_SOURCES} LINKS GTest::gmock_main ${arg_LINKS})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    add_test(NAME ${name} COMMAND ${name})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 60)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" ENVIRONMENT "LC_ALL=C.UTF-8")
    if("heavy" IN_LIST arg_LABELS)
        quorvel_heavy(${name})
    endif()
endfunction()

# quorvel_fuzz(<fuzzThing> SOURCES <more files> LINKS <targets>)
# Builds fuzzThing.cpp, which has LLVMFuzzerTestOneInput. The usual build replays corpus/fuzzThing beside it as a test;
# the preset `fuzz` links the fuzzer to it, for scripts/fuzz.sh.
if(QUORVEL_FUZZ)
    add_custom_target(fuzz_targets)
endif()
function(quorvel_fuzz name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/fuzz)
    target_link_libraries(${name} PRIVATE ${arg_LINKS} quorvel_flags)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    set(corpus ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})
    if(QUORVEL_FUZZ)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        add_dependencies(fuzz_targets ${name})
        cmake_path(RELATIVE_PATH corpus BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
        set_property(GLOBAL APPEND PROPERTY QUORVEL_FUZZ_TARGETS "${name} ${corpus}")
    else()
        target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/fuzz/replay.cpp)
        add_test(NAME ${name} COMMAND ${name} ${corpus})
        set_tests_properties(${name} PROPERTIES TIMEOUT 60 LABELS unit)
    endif()
endfunction()

# Writes the names of all fuzz targets and their folders of inputs for scripts/fuzz.sh.
function(quorvel_list_fuzz_targets)
    get_property(lines GLOBAL PROPERTY QUORVEL_FUZZ_TARGETS)
    list(JOIN lines "\n" lines)
    file(WRITE ${CMAKE_BINARY_DIR}/fuzz_targets.txt "${lines}\n")
endfunction()
