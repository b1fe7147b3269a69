# What Debian's policy wants of the texts in a package: manual pages and changelog packed, with no name and no time inside.
file(GLOB_RECURSE texts ${CPACK_TEMPORARY_DIRECTORY}/usr/share/man/*.1 ${CPACK_TEMPORARY_DIRECTORY}/usr/share/doc/*/changelog)
execute_process(COMMAND gzip -9 -n ${texts} COMMAND_ERROR_IS_FATAL ANY)
