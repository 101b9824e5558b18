# Shared by the scripts of this folder; sourced, never run.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build
logs=$build/logs
mkdir -p "$logs"

# Messages of the programs we call are matched below; C.UTF-8 exists on every Debian and gives Wine code page 1252.
export LC_ALL=C.UTF-8 LANG=C.UTF-8
unset LANGUAGE

# Without memory at random places (ADDR_NO_RANDOMIZE, personality(2)): with it CreateProcess of Wine 8 fails one start in a
# thousand with an internal error (1359), before the started program has begun. Some containers forbid to ask for that.
if ((!(0x$(</proc/self/personality) & 0x40000))) && setarch --addr-no-randomize true 2>/dev/null; then
  exec setarch --addr-no-randomize "$BASH" "$0" "$@"
fi

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

step_group=
wine_used=
display_pid=

# What a script started goes with it, however it ends.
finish() {
  local status=$? prefix
  trap - EXIT
  # Not an error when the group is gone already.
  [[ -z $step_group ]] || kill -TERM -- "-$step_group" 2>/dev/null || true
  for prefix in ${wine_used:+"$WINEPREFIX" "$WINEPREFIX.work"}; do
    [[ ! -d $prefix ]] || WINEPREFIX=$prefix timeout 60 wineserver --kill 2>/dev/null || true
  done
  [[ -z $display_pid ]] || { kill "$display_pid" 2>/dev/null && wait "$display_pid"; } || true
  exit "$status"
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# step <log> <text> <command...>: one line on the terminal, the output in build/logs/<log>.log, its end shown on
# failure. Not for use in a condition: `set -e` would be off inside <command>.
step() {
  local log=$logs/$1.log text=$2 status=0 start=$SECONDS
  shift 2
  printf '%s ... ' "$text"
  # A group of its own, so that an interrupted script takes the children of the step along.
  set -m
  ("$@") >"$log" 2>&1 </dev/null &
  step_group=$!
  set +m
  wait "$step_group" || status=$?
  step_group=
  if ((status == 0)); then
    printf 'done (%d s)\n' $((SECONDS - start))
    return
  fi
  printf 'FAILED (%d s)\n' $((SECONDS - start))
  local lines=40
  if grep -qE 'Temporary failure (in name )?resol|Could not (resolve|connect)|Connection (refused|timed out)|Network is unreachable|Failed to (fetch|establish a new connection)|Max retries exceeded' "$log"; then
    printf 'The network or a package server cannot be reached from here.\n' >&2
    lines=3
  fi
  tail -n "$lines" "$log" | sed 's/^/  | /' >&2
  die "$text: failed; the whole output is in ${log#"$root"/}"
}

# use_wine <name>: Wine runs in the prefix build/<name> from here on; what still runs there ends with the script.
use_wine() {
  export WINEPREFIX=$build/$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
  # No menu entries, no offers to download Mono and Gecko.
  export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe=d'
  # Windows of tests have no business on anybody's desktop.
  unset DISPLAY WAYLAND_DISPLAY
  wine_used=yes
  # Where Wine for 32 bits is installed, Debian's script takes its loader, which runs in no prefix that is older than it.
  local loader=/usr/lib/wine/wine64
  if [[ -x $loader ]]; then
    # Not a link: the loader goes by the name that it was started by.
    mkdir -p "$build/bin"
    [[ -x $build/bin/wine ]] || install /dev/stdin "$build/bin/wine" <<<$'#!/bin/sh\nexec '"$loader"' "$@"'
    export PATH=$build/bin:$PATH WINELOADER=$loader
  fi
  [[ -e $WINEPREFIX/system.reg ]] || step "$1" "Making a Wine prefix in build/$1" make_wine_prefix
}

make_wine_prefix() {
  # Under another name until it is complete.
  local target=$WINEPREFIX
  export WINEPREFIX=$target.work
  rm -rf "$target" "$WINEPREFIX"
  timeout 300 wine wineboot --init
  # The registry is written when the last program has ended.
  timeout 300 wineserver --wait
  mv "$WINEPREFIX" "$target"
}

# Starts a display without a screen, under a number that is free.
start_display() {
  local number='' pipe=$build/display.pipe
  rm -f "$pipe"
  mkfifo "$pipe"
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3<>"$pipe" >"$logs/display.log" 2>&1 </dev/null &
  display_pid=$!
  read -r -t 60 number <>"$pipe" || true
  rm -f "$pipe"
  [[ -n $number ]] || die "the display server did not start: $(tail -n 3 "$logs/display.log")"
  export DISPLAY=:$number
}

boot_wine() {
  # One server for all programs, or each would boot Windows. What a boot leaves running keeps the output of the
  # program that caused it open; better this one than a test whose output is read to the end.
  wineserver --persistent
  timeout 120 wine wineboot
  # A crash ends a program at once, with a trace in the log, instead of waiting for somebody to close its box.
  timeout 120 wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
}
