# How every target of this project is compiled, said once.

add_library(quorvel_flags INTERFACE)
target_compile_options(quorvel_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough)
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

# quorvel_library(<folder library> SOURCES <files> LINKS <targets>)
# One folder, one static library, one include directory: what a folder does not link it cannot include.
function(quorvel_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE quorvel_flags)
endfunction()

# quorvel_test(<tst_thing> SOURCES <more files> LINKS <targets> LABELS <labels>)
# Builds tst_thing.cpp and registers it with CTest.
function(quorvel_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LINKS;LABELS")
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE Qt6::Test ${arg_LINKS} quorvel_flags)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
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

# quorvel_server_test(<tst_thing> SOURCES <more files> LINKS <targets> LABELS <labels>)
# As quorvel_test, by GoogleTest and without Qt: for the backend service.
function(quorvel_server_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LINKS;LABELS")
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE GTest::gmock_main ${arg_LINKS} quorvel_flags)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 60)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" ENVIRONMENT "LC_ALL=C.UTF-8")
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
