# LOOMKIT_PROTECTION: compiler options that make a fault harder to use, by guarded stacks, checked bounds in calls of
# the C library, and marked targets of jumps. Empty for the sanitizers, which have checks of their own that some of
# these stand in the way of.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection=full LOOMKIT_MARKS_JUMP_TARGETS)

set(LOOMKIT_PROTECTION "")
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    # Checking bounds needs optimisation.
    set(LOOMKIT_PROTECTION -fstack-protector-strong
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    if(LOOMKIT_MARKS_JUMP_TARGETS)
        list(APPEND LOOMKIT_PROTECTION -fcf-protection=full)
    endif()
endif()
