# A manual page from its template and from what the program says of its own options:
# cmake -DPROGRAM=... -DTEMPLATE=... -DOUT=... -DPROJECT_VERSION=... -DVELLUM_RELEASE_DATE=... -P make_man_page.cmake
execute_process(COMMAND ${PROGRAM} --man OUTPUT_VARIABLE VELLUM_MAN_TEXT OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
configure_file(${TEMPLATE} ${OUT} @ONLY)
