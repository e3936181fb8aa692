#!/bin/sh
# Builds audit_plugin.msi from plugin.wxs, in the folder of the SDK. Needs wixl and msibuild (msitools).
set -e

name=audit_plugin
# That of the DLL's version resource, with four fields, if it has one: a package that does not say it never replaces
# a DLL that has one.
file_version=

change() { msibuild "$name.msi" -q "$1"; }

wixl -o "$name.msi" plugin.wxs
# wixl knows no actions that are carried out when the installer rolls back.
change "UPDATE CustomAction SET Type = 3393 WHERE Action = 'UndoAdd'"
change "UPDATE CustomAction SET Type = 3393 WHERE Action = 'UndoRemove'"
change "UPDATE Property SET Value = 'OLDER;NEWER' WHERE Property = 'SecureCustomProperties'"
if [ -n "$file_version" ]; then
    change "UPDATE File SET Version = '$file_version', Language = '1033' WHERE File = '$name.dll'"
    change "DELETE FROM MsiFileHash WHERE File_ = '$name.dll'"
fi
