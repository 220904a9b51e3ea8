# What cpack runs on the installed tree before it is packed.
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/debian-tree ${CPACK_TEMPORARY_DIRECTORY} ${CPACK_PACKAGE_NAME}
    "${CPACK_PACKAGE_CONTACT}" COMMAND_ERROR_IS_FATAL ANY)
