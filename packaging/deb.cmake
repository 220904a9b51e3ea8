# The Debian package, by cpack -G DEB; scripts/package says how it comes out the same from every build.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vx-sac)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "VX_SAC developers <vx-sac@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "converter of PASSCAL field recordings into SAC traces")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Recorders of seismic field experiments write streams of 1024-byte PASSCAL
packets: event headers and trailers, samples (16 or 32 bits, or compressed
by the Steim schemes), state of health, settings. vx_sac walks through such
a stream once, sorts it by recorder, event and channel, decodes every sample
and writes one SAC file for each channel of each event, with a readable log
of all packets and, on request, statistics of every trace.
.
The package brings the tools around it, too, with manual pages and with
completions for bash and zsh.")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ghostscript, gmt") # vx_plot draws with them
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "slurm-client")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/tree.cmake)

# Tools that are scripts need what runs them.
file(GLOB scripts LIST_DIRECTORIES false tools/bin/*)
foreach(script ${scripts})
    file(STRINGS ${script} first LIMIT_COUNT 1)
    if(first MATCHES "python3")
        set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3 (>= 3.11)")
    endif()
endforeach()
include(CPack)
