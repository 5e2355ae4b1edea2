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
        -Werror
        -Wshadow
        -Wconversion
        -Wsign-conversion
        -Wcast-qual
        -Wformat=2
        -Wnon-virtual-dtor
        -Woverloaded-virtual
        -Wold-style-cast
        -Wduplicated-cond
        -Wlogical-op
        -Wnull-dereference
        # GCC 12 at -O3 sees overlaps in std::string's own copying that cannot be (its bug 105651).
        -Wno-restrict
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

if(KELVARO_SANITIZE)
    set(sanitize -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(kelvaro_options INTERFACE ${sanitize})
    target_link_options(kelvaro_options INTERFACE ${sanitize})
endif()

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
    target_link_libraries(${name} PUBLIC kelvaro_options ${arg_LINK})
    if(WIN32)
        target_link_libraries(${name} PUBLIC ${arg_WINDOWS_LINK})
    endif()
endfunction()

# kelvaro_tests(NAME PORTABLE files... WINDOWS files... LINK targets... RESOURCES files...
#               PROPERTIES ctest properties...)
# One test program; every test in it is a CTest test, and so a process, of its own.
function(kelvaro_tests name)
    cmake_parse_arguments(arg "" "" "PORTABLE;WINDOWS;LINK;WINDOWS_LINK;RESOURCES;DEPENDS;PROPERTIES" ${ARGN})
    set(sources ${arg_PORTABLE})
    if(WIN32)
        list(APPEND sources ${arg_WINDOWS} ${arg_RESOURCES})
    endif()
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE kelvaro_options ${arg_LINK} GTest::gmock GTest::gtest_main)
    if(WIN32)
        target_link_libraries(${name} PRIVATE ${arg_WINDOWS_LINK})
    endif()
    if(arg_DEPENDS AND WIN32)
        add_dependencies(${name} ${arg_DEPENDS})
    endif()
    gtest_discover_tests(
        ${name}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 120
        PROPERTIES
            TIMEOUT 120
            # Not universal time, no whole hours off it, and in a form that the C runtime does not know.
            ENVIRONMENT_MODIFICATION TZ=set:America/St_Johns
            ${arg_PROPERTIES}
    )
endfunction()
