# Switches on the project's warnings for a target.
function(gqlib_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual
        # Destructors of endpoints and clients are not virtual; objects are destroyed through their own type, never a base.
        -Wno-non-virtual-dtor -Wno-delete-non-virtual-dtor
        # clang's variant of the latter: the clients delete their endpoint through the type that they created.
        $<$<CXX_COMPILER_ID:Clang>:-Wno-delete-non-abstract-non-virtual-dtor>
        $<$<BOOL:${GQLIB_WERROR}>:-Werror>)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_SIZEOF_VOID_P EQUAL 4)
        # g++ 12 for 32-bit ARM takes the head of Qt 5's arrays for the whole array, and notes a change of version 7.1.
        target_compile_options(${target} PRIVATE -Wno-stringop-overflow -Wno-psabi)
    endif()
endfunction()
