# What `cmake --install` puts where. Programs are targets; whatever lies in tools/bin, tools/share, docs/man and
# docs/examples comes along without being named here.
if(NOT DEFINED CMAKE_INSTALL_DOCDIR)
    set(CMAKE_INSTALL_DOCDIR share/doc/vx-sac CACHE PATH "Documents")
endif()
include(GNUInstallDirs)
set(VX_ZSH_COMPLETIONS_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Completions for zsh")

set(programs)
foreach(program vx_sac vx_mkrec vx_ls vx_check)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
        list(APPEND programs ${program})
    endif()
endforeach()

file(GLOB scripts LIST_DIRECTORIES false CONFIGURE_DEPENDS tools/bin/*)
foreach(script ${scripts})
    install(PROGRAMS ${script} DESTINATION ${CMAKE_INSTALL_BINDIR})
    cmake_path(GET script FILENAME name)
    list(APPEND programs ${name})
endforeach()
if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/tools/share)
    install(DIRECTORY tools/share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vx-sac USE_SOURCE_PERMISSIONS
        PATTERN __pycache__ EXCLUDE)
    file(CONFIGURE OUTPUT version CONTENT "@PROJECT_VERSION@\n" @ONLY) # scripts ask for it there
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/version DESTINATION ${CMAKE_INSTALL_DATADIR}/vx-sac)
endif()

foreach(section 1 5)
    file(GLOB pages CONFIGURE_DEPENDS docs/man/*.${section})
    if(NOT TARGET vx_check)
        list(FILTER pages EXCLUDE REGEX "/vx_check\\.1$")
    endif()
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()

# bash looks for completions by the name of the program: the others' lead to the one file.
set(bash_completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES tools/completions/vx_sac.bash DESTINATION ${bash_completions} RENAME vx_sac)
foreach(program ${programs})
    if(NOT program STREQUAL vx_sac)
        install(CODE "file(CREATE_LINK vx_sac
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${bash_completions}/${program}\" SYMBOLIC)")
    endif()
endforeach()
install(FILES tools/completions/_vx_sac DESTINATION ${VX_ZSH_COMPLETIONS_DIR})

# Installed, the documents lie in one folder: README's links lead there, and those to files of the source alone
# (the code's documents, the manual pages) are plain words.
file(READ README.md readme)
string(REGEX REPLACE "\\]\\(docs/(cookbook|format|oddities|scaling)\\.md" "](\\1.md" readme "${readme}")
string(REGEX REPLACE "\\]\\(docs/(examples|pictures)/" "](\\1/" readme "${readme}")
string(REGEX REPLACE "\\[([^]\n]*)\\]\\((docs/[^)\n]*|CONTRIBUTING\\.md)\\)" "\\1" readme "${readme}")
file(CONFIGURE OUTPUT installed/README.md CONTENT "@readme@" @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/installed/README.md CHANGELOG.md docs/cookbook.md docs/format.md
    docs/oddities.md docs/scaling.md docs/vx_check.schema.json DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/pictures/demo.png DESTINATION ${CMAKE_INSTALL_DOCDIR}/pictures)
if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/docs/examples)
    install(DIRECTORY docs/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS)
endif()
