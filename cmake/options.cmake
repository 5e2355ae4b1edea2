# What every target of ours is compiled and linked with. Third-party code (GoogleTest) does not use it.
add_library(kelvaro_options INTERFACE)
target_compile_features(kelvaro_options INTERFACE cxx_std_20)
target_include_directories(kelvaro_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(
    kelvaro_options
    INTERFACE
        -Wall
        -Wextra
        -Wpedantic
        $<$<BOOL:${KELVARO_WERROR}>:-Werror>
        -Wshadow
        -Wconversion
        -Wsign-conversion
        -Wcast-qual
        -Wformat=2
        -Wnon-virtual-dtor
        -Woverloaded-virtual
        -Wold-style-cast
        -Wnull-dereference
        $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond>
        $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op>
        # GCC 12 at -O3 sees overlaps in std::string's own copying that cannot be (its bug 105651).
        $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
)

if(WIN32)
    target_compile_definitions(
        kelvaro_options
        INTERFACE
            UNICODE
            _UNICODE
            NOMINMAX
            _WIN32_WINNT=0x0A00
    )
    # One file that starts on a bare Windows: the runtime libraries go in.
    target_link_options(kelvaro_options INTERFACE -static)
endif()

# Tests name files by full path. Under Wine, drive Z: is the root of the file system.
set(KELVARO_PATH_PREFIX "")
if(CMAKE_CROSSCOMPILING)
    set(KELVARO_PATH_PREFIX "Z:")
endif()

# Where test programs that run as a whole leave what became of each test.
set(KELVARO_RESULTS_DIR "${CMAKE_BINARY_DIR}/results")

if(KELVARO_SANITIZE)
    set(sanitize -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(kelvaro_options INTERFACE ${sanitize})
    target_link_options(kelvaro_options INTERFACE ${sanitize})
endif()

if(KELVARO_FUZZ)
    set(sanitize -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(kelvaro_options INTERFACE -fsanitize=fuzzer-no-link ${sanitize})
    target_link_options(kelvaro_options INTERFACE ${sanitize})
endif()

# What is shipped has symbols, in files of their own: function names and lines. No folder of the machine that built it
# stands in them, under whichever name the compiler was given it: ccache makes paths relative to the build folder.
file(RELATIVE_PATH source_from_build ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
string(REGEX REPLACE "/$" "" source_from_build "${source_from_build}")
set(symbols -g1 -ffile-prefix-map=${PROJECT_SOURCE_DIR}=/kelvaro -ffile-prefix-map=${source_from_build}=/kelvaro)
add_library(kelvaro_symbols INTERFACE)
if(KELVARO_COVERAGE)
    # Counters find their lines by whole paths. Not in tests and stand-ins: they link what counts, and nothing more.
    set(symbols -O0 -g --coverage -fprofile-update=atomic)
    target_link_options(kelvaro_options INTERFACE --coverage)
endif()
target_compile_options(kelvaro_symbols INTERFACE "$<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:${symbols}>")

# kelvaro_program(TARGET): a program that is shipped. It is put into the output folder and has no time in it: the same
# sources make the same bytes. A release has its symbols in symbols/NAME.debug, which the program names, and not in it.
# The global property KELVARO_PROGRAMS lists them.
function(kelvaro_program target)
    set_property(GLOBAL APPEND PROPERTY KELVARO_PROGRAMS ${target})
    target_link_libraries(${target} PRIVATE kelvaro_symbols)
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${KELVARO_OUTPUT_DIR})
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    # Without this, objcopy puts the present time into what it writes.
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
    set(debug_file ${KELVARO_OUTPUT_DIR}/symbols/$<TARGET_FILE_NAME:${target}>.debug)
    add_custom_command(
        TARGET ${target}
        POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory ${KELVARO_OUTPUT_DIR}/symbols
        COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:${target}> ${debug_file}
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${debug_file} $<TARGET_FILE:${target}>
        VERBATIM
    )
endfunction()

# kelvaro_layer(NAME PORTABLE files... WINDOWS files... LINK targets...)
# One static library per layer. A host build takes the portable units only: those that compute without
# Windows and are therefore tested natively under the sanitizers as well.
function(kelvaro_layer name)
    cmake_parse_arguments(arg "" "" "PORTABLE;WINDOWS;LINK;WINDOWS_LINK" ${ARGN})
    set(sources ${arg_PORTABLE})
    if(WIN32)
        list(APPEND sources ${arg_WINDOWS})
    endif()
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE kelvaro_options ${arg_LINK})
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC kelvaro_options ${arg_LINK} PRIVATE kelvaro_symbols)
    if(WIN32)
        target_link_libraries(${name} PUBLIC ${arg_WINDOWS_LINK})
    endif()
endfunction()

# What tests are compiled with: little optimisation, since only the code that they test is what ships. With
# -fpch-preprocess ccache takes what uses precompiled headers.
add_library(kelvaro_test_options INTERFACE)
target_link_libraries(kelvaro_test_options INTERFACE kelvaro_options GTest::gmock)
target_compile_options(kelvaro_test_options INTERFACE $<$<CONFIG:Release>:-Og> -fpch-preprocess)

# For targets of test code: those options, and the headers of tests/precompiled.h. Product code does without them,
# since they would hide a missing include.
function(kelvaro_test_sources target)
    target_link_libraries(${target} PRIVATE kelvaro_test_options)
    target_precompile_headers(${target} REUSE_FROM test_headers)
endfunction()

# kelvaro_library_beside(TARGET LIBRARY): puts the program into a folder of its own, with the library beside it, where
# Windows looks first.
function(kelvaro_library_beside target library)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target})
    set_target_properties(
        ${target}
        PROPERTIES
            RUNTIME_OUTPUT_DIRECTORY ${folder}
            # The copy is made after linking.
            LINK_DEPENDS $<TARGET_FILE:${library}>
    )
    add_dependencies(${target} ${library})
    add_custom_command(
        TARGET ${target}
        POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:${library}> ${folder}
        VERBATIM
    )
endfunction()

# kelvaro_tests(NAME [XINPUT] PORTABLE files... WINDOWS files... LINK targets... RESOURCES files...
#               PROPERTIES ctest properties... ONE_PROCESS suites...)
# One test program; every test in it is a CTest test, and so a process, of its own.
# XINPUT gives it the stand-in for XInput, which is linked and not loaded. Every program that SystemInfo is linked into
# needs it: Wine's own XInput starts threads, and a process that ends while they start can hang.
# scripts/check_xinput.sh finds the programs without it.
# The suites of ONE_PROCESS change nothing of what belongs to the process. They are one CTest test besides, which has
# the program's name and runs them in random order in one process, where none may leave anything to the next.
# ./test.sh takes that one (label `whole`) instead of their single tests (label `single`), unless there is a filter.
# Natively, what computes without Windows is all of that kind.
function(kelvaro_tests name)
    cmake_parse_arguments(
        arg "XINPUT" "" "PORTABLE;WINDOWS;LINK;WINDOWS_LINK;RESOURCES;DEPENDS;PROPERTIES;ONE_PROCESS" ${ARGN}
    )
    set(sources ${arg_PORTABLE})
    if(WIN32)
        list(APPEND sources ${arg_WINDOWS} ${arg_RESOURCES})
    else()
        set(arg_ONE_PROCESS "*")
    endif()
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    kelvaro_test_sources(${name})
    target_link_libraries(${name} PRIVATE ${arg_LINK} test_main)
    if(WIN32)
        target_link_libraries(${name} PRIVATE ${arg_WINDOWS_LINK})
    endif()
    if(arg_DEPENDS AND WIN32)
        add_dependencies(${name} ${arg_DEPENDS})
    endif()
    if(arg_XINPUT AND WIN32)
        kelvaro_library_beside(${name} xinput_standin)
        list(APPEND arg_PROPERTIES ENVIRONMENT "WINEDLLOVERRIDES=xinput1_4=n,b")
    endif()
    set(discovery DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120)
    set(properties
        TIMEOUT 120
        # Not universal time, no whole hours off it, and in a form that the C runtime does not know.
        ENVIRONMENT_MODIFICATION TZ=set:America/St_Johns
        ${arg_PROPERTIES}
    )
    list(TRANSFORM arg_ONE_PROCESS APPEND ".*")
    list(JOIN arg_ONE_PROCESS ":" together)
    string(JOIN "|" line "${together}" ${properties})
    set_property(GLOBAL APPEND PROPERTY kelvaro_test_programs ${name})
    set_property(TARGET ${name} PROPERTY kelvaro_test_line "${line}")
    if(together)
        add_test(
            NAME ${name}
            COMMAND
                ${name} --gtest_filter=${together} --gtest_shuffle
                --gtest_output=xml:${KELVARO_PATH_PREFIX}${KELVARO_RESULTS_DIR}/${name}.xml
        )
        set_tests_properties(${name} PROPERTIES ${properties} LABELS whole)
        gtest_discover_tests(${name} TEST_FILTER "${together}" ${discovery} PROPERTIES ${properties} LABELS single)
    endif()
    if(WIN32)
        gtest_discover_tests(${name} TEST_FILTER "-${together}" ${discovery} PROPERTIES ${properties})
    endif()
endfunction()

# What all test programs are, for who runs them without CTest, as on a machine without the sources. One line for each:
# its path from this file on, the filter of its suites of ONE_PROCESS, and the names and values of its properties.
function(kelvaro_list_test_programs)
    get_property(programs GLOBAL PROPERTY kelvaro_test_programs)
    set(lines "")
    foreach(program ${programs})
        get_target_property(folder ${program} RUNTIME_OUTPUT_DIRECTORY)
        if(NOT folder)
            get_target_property(folder ${program} BINARY_DIR)
        endif()
        file(RELATIVE_PATH path ${CMAKE_BINARY_DIR} ${folder}/${program}${CMAKE_EXECUTABLE_SUFFIX})
        get_target_property(line ${program} kelvaro_test_line)
        string(APPEND lines "${path}|${line}\n")
    endforeach()
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/test_programs.txt CONTENT "@lines@" @ONLY)
endfunction()
