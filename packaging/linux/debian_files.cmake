# Adds to the staged tree of the Debian package what only a Debian package has: its own documents, compressed ones, and
# the folder that the product goes to.
set(source "${CMAKE_CURRENT_LIST_DIR}/../..")
set(root "${CPACK_TEMPORARY_DIRECTORY}")
set(documents "${root}/usr/share/doc/tolvix-installer")

execute_process(
    COMMAND python3 "${source}/packaging/debian_changelog.py" "${source}/CHANGELOG.md" "${CPACK_PACKAGE_CONTACT}"
    OUTPUT_VARIABLE changelog COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${documents}/changelog" "${changelog}")
execute_process(
    COMMAND gzip --best --no-name --force "${documents}/changelog" "${root}/usr/share/man/man1/tolvix-installer.1"
    COMMAND_ERROR_IS_FATAL ANY)
file(COPY "${source}/packaging/linux/copyright" DESTINATION "${documents}"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(COPY "${source}/packaging/linux/lintian-overrides" DESTINATION "${root}/usr/share/lintian/overrides"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(RENAME "${root}/usr/share/lintian/overrides/lintian-overrides"
    "${root}/usr/share/lintian/overrides/tolvix-installer")
file(MAKE_DIRECTORY "${root}/Applications")
execute_process(COMMAND chmod -R u=rwX,go=rX "${root}" COMMAND_ERROR_IS_FATAL ANY)
