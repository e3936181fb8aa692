#!/bin/sh
# Builds audit_plugin.msi from plugin.wxs, in the folder of the SDK. Needs wixl and msibuild (msitools).
set -e

name=audit_plugin
# That of the DLL's version resource, with four fields, if it has one: a package that does not say it never replaces
# a DLL that has one.
file_version=

change() { msibuild "$name.msi" -q "$1"; }

wixl -o "$name.msi" plugin.wxs
# Run when the installer rolls back, which wixl does not know: from a DLL in the package (1), failures ignored (64), by the
# rollback (256), deferred (1024), as SYSTEM (2048).
for action in UndoAdd UndoRemove; do
    change "UPDATE CustomAction SET Type = $((1 + 64 + 256 + 1024 + 2048)) WHERE Action = '$action'"
done
change "UPDATE Property SET Value = 'OLDER;NEWER' WHERE Property = 'SecureCustomProperties'"
if [ -n "$file_version" ]; then
    change "UPDATE File SET Version = '$file_version', Language = '1033' WHERE File = '$name.dll'"
    change "DELETE FROM MsiFileHash WHERE File_ = '$name.dll'"
fi
