# The boxes of the house. Every library is made with tarnwick_library(), so that
# each sees exactly the libraries it names: a wrong include does not compile.

find_program(TARNWICK_CCACHE ccache)
if(TARNWICK_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${TARNWICK_CCACHE})
endif()

add_library(tarnwick_options INTERFACE)
target_compile_options(tarnwick_options INTERFACE
    -Wall -Wextra -Wpedantic -Wno-missing-field-initializers -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -fvisibility=hidden)
if(TARNWICK_WARNINGS_AS_ERRORS)
    target_compile_options(tarnwick_options INTERFACE -Werror)
endif()
if(TARNWICK_SANITIZE)
    target_compile_options(tarnwick_options INTERFACE -fsanitize=${TARNWICK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(tarnwick_options INTERFACE -fsanitize=${TARNWICK_SANITIZE})
endif()

# tarnwick_library(NAME [LIBRARIES...]): all .cpp files of the current folder.
function(tarnwick_library name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/Sources)
    target_link_libraries(${name} PUBLIC ${ARGN} PRIVATE tarnwick_options)
endfunction()

# tarnwick_test(NAME [LIBRARIES...]): all .cpp files of the current folder as one
# test program, each of its tests known to CTest by name.
function(tarnwick_test name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    add_executable(${name} ${sources})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Sources ${PROJECT_SOURCE_DIR}/Tests)
    target_link_libraries(${name} PRIVATE ${ARGN} GTest::gtest_main tarnwick_options)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
