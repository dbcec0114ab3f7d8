# Runs between installing and packing: folders are made with whatever the mask of the caller leaves, which must not decide
# who may use the package. Those with a sticky bit have been made on purpose.
execute_process(COMMAND find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" -type d ! -perm -1000 -exec chmod 0755 {} +
    COMMAND_ERROR_IS_FATAL ANY)
