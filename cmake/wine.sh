#!/bin/sh
# Runs a Windows program under Wine, without windows and without Wine's own chatter.
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
exec /usr/lib/wine/wine64 "$@"
