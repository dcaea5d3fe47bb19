# Shared by the scripts of this folder and by .ci/run, which source it. Messages go to standard
# error, so that standard output holds answers only.
# shellcheck shell=bash

top=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")

# Everything built lies in one folder. A clone that cannot be written to is built in the user's
# cache, each clone in a folder of its own.
if [[ -n ${STRINGRESOLVER_BUILD:-} ]]; then
  build_root=$(readlink -m -- "$STRINGRESOLVER_BUILD")
elif [[ -w $top ]]; then
  build_root=$top/build
else
  clone=$(printf '%s' "$top" | cksum)
  build_root=${XDG_CACHE_HOME:-$HOME/.cache}/stringresolver/${clone%% *}
fi

say() { printf '%s\n' "$*" >&2; }

fail() {
  say "${0##*/}: $*"
  exit 1
}

if [[ -e $build_root && ! -w $build_root ]]; then
  fail "$build_root cannot be written to; was it made as root? Remove it, or name another folder in" \
    "STRINGRESOLVER_BUILD"
fi

# progress TEXT: one moving line on a terminal. A log gets a line every 20 seconds, enough to see
# that something happens.
progress() {
  if [[ -t 2 ]]; then
    printf '\r\e[K%s' "${1:0:79}" >&2
  elif ((SECONDS >= next_note)); then
    say "$1"
    next_note=$((SECONDS + 20))
  fi
}
next_note=0

end_progress() { [[ ! -t 2 ]] || printf '\r\e[K' >&2; }

# Shows the lines of standard input as progress.
show_progress() {
  local title=$1 line next_note=$((SECONDS + 20))
  while IFS= read -r line || [[ -n $line ]]; do
    # What a program repaints on one line arrives as one line with carriage returns.
    progress "$title: ${line##*$'\r'}"
  done
  end_progress
}

# run TITLE LOG COMMAND...: runs a command whose output matters only when it fails; LOG keeps all
# of it. A step that took a while is named when it ends.
run() {
  local title=$1 log=$2 status=0 began=$SECONDS
  shift 2
  mkdir -p -- "$(dirname -- "$log")"
  "$@" </dev/null 2>&1 | tee -- "$log" | show_progress "$title" || status=$?
  if ((status != 0)); then
    say "$title failed:"
    # CMake and Ninja go on for a while after the first failure; what matters begins there. Linters
    # print an error somewhere among much else.
    if grep -qE '^(FAILED: |CMake Error)' "$log"; then
      sed -n -E '/^(FAILED: |CMake Error)/,$p' "$log" | head -n 80 >&2
    elif grep -q 'error: ' "$log"; then
      grep -A 5 'error: ' "$log" | head -n 80 >&2
    else
      tail -n 40 -- "$log" >&2
    fi
    fail "see all of it in $log"
  fi
  if ((SECONDS - began >= 3)); then say "$title: done in $((SECONDS - began)) s"; fi
}

# missing_packages GROUP...: the packages of these groups that are not installed, one a line.
missing_packages() {
  local wanted=() machine group package architecture
  machine=$(dpkg --print-architecture)
  while read -r group package architecture; do
    [[ " $* " == *" $group "* ]] || continue
    [[ -z $architecture || $architecture == "$machine" ]] || continue
    wanted+=("$package")
  done <"$top/scripts/packages"
  # A package that dpkg has never heard of is named on standard error only: it is missing too.
  comm -23 <(printf '%s\n' "${wanted[@]}" | LC_ALL=C sort -u) \
    <({ dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true; } |
      sed -n 's/^installed //p' | LC_ALL=C sort -u)
}

# need GROUP...: installs what these groups of scripts/packages lack; silent when nothing is.
need() {
  local missing=() as_root=() names
  if [[ ${STRINGRESOLVER_APT:-yes} == no ]]; then return; fi
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    names=$(awk -v groups=" $* " 'index(groups, " " $1 " ") { printf " %s", $2 }' \
      "$top/scripts/packages")
    fail "this machine has no apt-get to install packages with. Install by hand what these" \
      "Debian packages hold, and run again with STRINGRESOLVER_APT=no:$names"
  fi
  mapfile -t missing < <(missing_packages "$@")
  ((${#missing[@]})) || return 0
  if ((EUID != 0)); then
    command -v sudo >/dev/null ||
      fail "installing packages takes root, and there is no sudo. As root, run:" \
        "apt-get install ${missing[*]}"
    as_root=(sudo)
  fi
  say "Installing: ${missing[*]}"
  # Asked for here, where the question does not drown in the progress of the installation.
  if ((${#as_root[@]})); then sudo -v || fail "sudo refused: nothing was installed"; fi
  # Lists that cannot be renewed may still do: then the installation says what is wrong.
  # shellcheck disable=SC2016
  run "Installing" "$build_root/apt.log" \
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive sh -c '
      apt-get update
      exec apt-get install -y --no-install-recommends -o DPkg::Lock::Timeout=300 "$@"' \
    sh "${missing[@]}"
}

# configure NAME CMAKE-OPTION...: makes the build folder NAME ready. Done once; ninja itself runs
# CMake again when a CMake file changes.
configure() {
  local directory=$build_root/$1 options
  printf -v options '%s\n' "$top" "${@:2}"
  # $(...) drops the last newline of the record.
  if [[ -e $directory/build.ninja && -e $directory/configured-with &&
    $(<"$directory/configured-with") == "${options%$'\n'}" ]]; then return; fi
  rm -f -- "$directory/configured-with"
  run "Configuring" "$directory/configure.log" \
    cmake --fresh -S "$top" -B "$directory" -G Ninja "${@:2}"
  printf '%s' "$options" >"$directory/configured-with"
}

# build NAME [TARGET...]: builds these targets of a configured folder, or everything.
build() {
  local directory=$build_root/$1
  run "Building" "$directory/build.log" cmake --build "$directory" ${2:+--target "${@:2}"}
}
