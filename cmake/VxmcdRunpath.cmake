# SPDX-License-Identifier: MIT
# Where installed programs and libraries look for the libraries of the same installation.

# Below other prefixes the property INSTALL_RPATH leads to them, also after a move. Below /usr the loader finds them by
# itself, and a RUNPATH would keep another feature library from taking the place of ours. Comes after install(TARGETS).
function(vxmcd_no_runpath_below_usr file component)
  install(CODE "if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}/usr/${file}\")
  endif()" COMPONENT ${component})
endfunction()
