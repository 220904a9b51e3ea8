# What `cmake --install` puts where. Programs are targets; whatever lies in tools/bin, tools/share, docs/man and
# docs/examples comes along without being named here.
if(NOT DEFINED CMAKE_INSTALL_DOCDIR)
    set(CMAKE_INSTALL_DOCDIR share/doc/vx-sac CACHE PATH "Documents")
endif()
include(GNUInstallDirs)
set(VX_ZSH_COMPLETIONS_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE PATH "Completions for zsh")

foreach(program vx_sac vx_mkrec vx_ls)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
endforeach()

file(GLOB scripts CONFIGURE_DEPENDS tools/bin/*)
install(PROGRAMS ${scripts} DESTINATION ${CMAKE_INSTALL_BINDIR})
if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/tools/share)
    install(DIRECTORY tools/share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vx-sac)
endif()

foreach(section 1 5)
    file(GLOB pages CONFIGURE_DEPENDS docs/man/*.${section})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()

install(FILES README.md CHANGELOG.md docs/oddities.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/docs/examples)
    install(DIRECTORY docs/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
