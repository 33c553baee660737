# The warnings of this project, for its own targets only.
function(gqlib_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual
        # Endpoints and clients have virtual operations and are destroyed through their own type, never a base.
        -Wno-non-virtual-dtor -Wno-delete-non-virtual-dtor
        # clang's finer form of the latter: the clients delete their endpoint as just the type it was made as.
        $<$<CXX_COMPILER_ID:Clang>:-Wno-delete-non-abstract-non-virtual-dtor>
        $<$<BOOL:${GQLIB_WERROR}>:-Werror>)
endfunction()
