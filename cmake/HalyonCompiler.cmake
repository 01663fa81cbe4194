# Warnings, sanitizers and coverage: what every target of the tree is built with. `halyon_compile(TARGET)` applies it.

set(HALYON_WARNINGS
    -Wall -Wextra -Wpedantic -Werror
    -Wconversion -Wsign-conversion -Wshadow
    -Wcast-align -Wcast-qual -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough
    -Wmissing-declarations -Wold-style-cast -Woverloaded-virtual -Wredundant-decls
    -Wundef -Wunused -Wvla)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND HALYON_WARNINGS -Wduplicated-branches -Wduplicated-cond -Wlogical-op)
else()
  list(APPEND HALYON_WARNINGS -Wthread-safety)
endif()

# g++ 12 sees overlapping copies in a literal followed by a std::string, at full optimisation; there are none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  list(APPEND HALYON_WARNINGS -Wno-restrict)
endif()

set(HALYON_INSTRUMENT "")
if(HALYON_SANITIZE)
  list(APPEND HALYON_INSTRUMENT -fsanitize=${HALYON_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
endif()
if(HALYON_COVERAGE)
  list(APPEND HALYON_INSTRUMENT --coverage -fprofile-update=atomic -DHALYON_COVERAGE)
endif()
# The whole program is instrumented or none of it: a half-instrumented process reports faults that are not there.
add_compile_options(${HALYON_INSTRUMENT})
add_link_options(${HALYON_INSTRUMENT})

# Without this an inline static of a template would pin the module in memory for ever after its first load.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fno-gnu-unique)
endif()

# On 32-bit machines the C library counts files and seconds in 32 bits unless told otherwise, and 32-bit x86 reckons in
# registers wider than a double unless told otherwise: a date would depend on what was kept in a register.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86)")
    add_compile_options(-msse2 -mfpmath=sse)
  endif()
endif()

function(halyon_compile target)
  target_compile_options(${target} PRIVATE ${HALYON_WARNINGS})
endfunction()

# In release builds the floors of the runtime are optimised as one: the module's short calls cross several of them. The
# libraries keep ordinary code too, for hosts that are linked without. Calls into the engine go without a stub.
include(CheckIPOSupported)
check_ipo_supported(RESULT HALYON_HAS_IPO LANGUAGES CXX)
function(halyon_optimize target)
  if(HALYON_HAS_IPO AND NOT HALYON_INSTRUMENT)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-ffat-lto-objects>)
    endif()
  endif()
  target_compile_options(${target} PRIVATE -fno-plt)
endfunction()
