# Compiles the type library and the C++ declarations of its interfaces from the one IDL source.
find_program(WIDL NAMES ${triple}-widl ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-widl REQUIRED)
find_file(STDOLE2 stdole2.tlb REQUIRED NO_CMAKE_FIND_ROOT_PATH
          PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows /usr/lib/i386-linux-gnu/wine/i386-windows)
get_filename_component(STDOLE2_DIR ${STDOLE2} DIRECTORY)
set(TYPELIB_DIR ${CMAKE_BINARY_DIR}/typelib)
file(MAKE_DIRECTORY ${TYPELIB_DIR})
set(idl ${CMAKE_SOURCE_DIR}/component/TERVANELib.idl)
set(widl_flags -I /usr/include/wine/wine/windows -L ${STDOLE2_DIR})
if(TERVANE_ARCH STREQUAL "x86")
    list(APPEND widl_flags --win32)
else()
    list(APPEND widl_flags --win64)
endif()
add_custom_command(
    OUTPUT ${TYPELIB_DIR}/TERVANELib.h ${TYPELIB_DIR}/TERVANELib.tlb
    COMMAND ${WIDL} ${widl_flags} -h -o ${TYPELIB_DIR}/TERVANELib.h ${idl}
    COMMAND ${WIDL} ${widl_flags} -t -o ${TYPELIB_DIR}/TERVANELib.tlb ${idl}
    DEPENDS ${idl}
    VERBATIM)
add_custom_target(typelib_files DEPENDS ${TYPELIB_DIR}/TERVANELib.h ${TYPELIB_DIR}/TERVANELib.tlb)
add_library(typelib INTERFACE)
add_dependencies(typelib typelib_files)
target_include_directories(typelib SYSTEM INTERFACE ${TYPELIB_DIR})
