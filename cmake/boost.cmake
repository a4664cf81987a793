# Boost.Regex is header-only. Its headers lie in the native include folder, which a cross compiler
# must never see, so it gets a folder that holds nothing but a link to them.
if(NOT EXISTS /usr/include/boost/regex/v5/regex.hpp)
    message(FATAL_ERROR "Boost.Regex (header-only, 1.76 or later) not found; run scripts/setup.")
endif()
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/boost)
file(CREATE_LINK /usr/include/boost ${CMAKE_BINARY_DIR}/boost/boost SYMBOLIC)
add_library(boost_regex INTERFACE)
target_include_directories(boost_regex SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/boost)
