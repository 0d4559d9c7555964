# Compiler flags of the whole tree. Every target of the project links kestrel_flags.
# The product is built without exceptions and RTTI; warnings are errors everywhere.

add_library(kestrel_flags INTERFACE)
target_include_directories(kestrel_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(kestrel_flags INTERFACE _GNU_SOURCE)
target_compile_options(kestrel_flags INTERFACE
  -Wall -Wextra -Werror -Wshadow -Wpointer-arith -Wvla -Wundef
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -Wnon-virtual-dtor>)

# For what runs seldom: a release has it as small as it can be, which spares memory.
set(KESTREL_SMALL $<$<CONFIG:Release>:-Os>)

# GCC 12 sees overlapping copies in "literal" + std::string that are not there (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kestrel_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

if(KESTREL_SANITIZE)
  set(KESTREL_SANITIZERS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(kestrel_flags INTERFACE ${KESTREL_SANITIZERS})
  target_link_options(kestrel_flags INTERFACE ${KESTREL_SANITIZERS})
  target_compile_definitions(kestrel_flags INTERFACE KESTREL_SANITIZED)
else()
  target_compile_options(kestrel_flags INTERFACE
    -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()
if(KESTREL_FUZZ)
  target_compile_options(kestrel_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Links the C++ runtime into a program or library of the product. That spares a process that has no other use for
# libstdc++ and its libraries some 1.5 MiB of memory; the platform library's C interface keeps the two copies apart.
function(kestrel_static_runtime target)
  if(NOT KESTREL_SANITIZE)
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
