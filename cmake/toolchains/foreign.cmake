# Builds for another machine of Debian's: HALYON_MACHINE is its name there (i386, s390x, arm64), HALYON_MACHINE_ROOT the
# folder with its libraries and its compiler, as scripts/make-sysroot makes it. What is built runs where it was built,
# beside this machine's own programs, and nowhere else: it is there to be tested.
# Projects that CMake makes to try things out see nothing but the environment.
foreach(name HALYON_MACHINE HALYON_MACHINE_ROOT)
  if(DEFINED ${name})
    set(ENV{${name}} "${${name}}")
  else()
    set(${name} "$ENV{${name}}")
  endif()
endforeach()

set(CMAKE_SYSTEM_NAME Linux)
set(machine_triplet ${HALYON_MACHINE}-linux-gnu)
if(HALYON_MACHINE STREQUAL "i386")
  set(CMAKE_SYSTEM_PROCESSOR i686)
elseif(HALYON_MACHINE STREQUAL "arm64")
  set(CMAKE_SYSTEM_PROCESSOR aarch64)
  set(machine_triplet aarch64-linux-gnu)
else()
  set(CMAKE_SYSTEM_PROCESSOR ${HALYON_MACHINE})
endif()
set(CMAKE_LIBRARY_ARCHITECTURE ${machine_triplet})
set(CMAKE_CXX_COMPILER ${HALYON_MACHINE_ROOT}/tools/${CMAKE_SYSTEM_PROCESSOR}-linux-gnu-g++)
if(NOT EXISTS ${CMAKE_CXX_COMPILER})
  message(FATAL_ERROR "HALYON_MACHINE and HALYON_MACHINE_ROOT do not lead to a compiler: ${CMAKE_CXX_COMPILER}")
endif()

# What the caller names to look in was built for that machine too.
set(CMAKE_SYSROOT ${HALYON_MACHINE_ROOT})
set(CMAKE_FIND_ROOT_PATH ${HALYON_MACHINE_ROOT} ${CMAKE_PREFIX_PATH} $ENV{CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR}
    "${HALYON_MACHINE_ROOT}/usr/lib/${machine_triplet}/pkgconfig:${HALYON_MACHINE_ROOT}/usr/share/pkgconfig")

# The toolkit's own tools run on this machine.
set(QT_HOST_PATH /usr CACHE PATH "")
