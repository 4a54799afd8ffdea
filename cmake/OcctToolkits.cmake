# Offers plenvorith::occt: the toolkits of Open CASCADE Technology that the program links. Installed,
# too: other projects link the same.
#
# The kernel's version file accepts exact matches only, so the release is compared here. Its exported
# targets may name libraries that its development packages do not bring (TBB) and carry no include
# folder; the toolkits are therefore looked up as libraries, in the folder that the package names.
find_package(OpenCASCADE REQUIRED)
set(occt_version
    ${OpenCASCADE_MAJOR_VERSION}.${OpenCASCADE_MINOR_VERSION}.${OpenCASCADE_MAINTENANCE_VERSION})
if(occt_version VERSION_LESS 7.5)
  message(FATAL_ERROR "Plenvorith needs Open CASCADE 7.5 or later (its interfaces take a "
                      "Message_ProgressRange); found ${occt_version} in ${OpenCASCADE_DIR}")
endif()

# Release 7.8 gathered the data-exchange toolkits under new names.
if(occt_version VERSION_LESS 7.8)
  set(occt_data_exchange TKSTEP TKSTEP209 TKSTEPAttr TKSTEPBase TKSTL)
else()
  set(occt_data_exchange TKDESTEP TKDESTL)
endif()

# Adds plenvorith::<name>, a target for some toolkits.
function(plenvorith_occt_target name)
  add_library(plenvorith::${name} INTERFACE IMPORTED)
  target_include_directories(plenvorith::${name} SYSTEM INTERFACE ${OpenCASCADE_INCLUDE_DIR})
  # Where the kernel lies outside the system's folders, its toolkits find each other by the path that
  # the program carries, which only the older of the two kinds of tags passes on.
  target_link_options(plenvorith::${name} INTERFACE LINKER:--disable-new-dtags)
  foreach(toolkit IN LISTS ARGN)
    find_library(
      occt_${toolkit} ${toolkit} REQUIRED
      PATHS ${OpenCASCADE_LIBRARY_DIR}
      NO_DEFAULT_PATH)
    mark_as_advanced(occt_${toolkit})
    target_link_libraries(plenvorith::${name} INTERFACE ${occt_${toolkit}})
  endforeach()
endfunction()

# plenvorith_occt_order(<target>)
#
# Lets a program start faster. At its start some 40,000 symbols are looked up in one library after the
# other, in the order in which the program names them; here those that define most of what is looked
# up come first. The program loads no library that it would not load without this.
function(plenvorith_occt_order target)
  set(ordered "")
  foreach(toolkit IN ITEMS TKSTEPBase TKSTEP TKDESTEP TKXSBase TKMath TKSTEPAttr TKGeomAlgo TKGeomBase
                           TKernel TKG3d TKTopAlgo TKShHealing)
    find_library(
      occt_${toolkit} ${toolkit}
      PATHS ${OpenCASCADE_LIBRARY_DIR}
      NO_DEFAULT_PATH)
    mark_as_advanced(occt_${toolkit})
    if(occt_${toolkit})
      list(APPEND ordered ${occt_${toolkit}})
    endif()
  endforeach()
  # As options these stand in front of all libraries.
  target_link_options(${target} PRIVATE LINKER:--push-state,--no-as-needed ${ordered}
                                        LINKER:--pop-state)
endfunction()

plenvorith_occt_target(occt ${occt_data_exchange} TKXSBase TKMesh TKTopAlgo TKBRep TKGeomBase TKG3d TKMath
                       TKernel)
message(STATUS "Open CASCADE ${occt_version} in ${OpenCASCADE_LIBRARY_DIR}")
