#!/usr/bin/env bash
# Draws a poster by scripts/poster.sh on two hosts, which are two servers of ssh on this machine with keys of their own. One is
# killed in the middle, with all that it runs; the image must be the bytes of one command.
# usage: scripts/try-ssh.sh VORNA [MODEL]; as root on Debian 12. Installs openssh-server and parallel, stops all that it started.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
if [ $# -lt 1 ]; then
    sed -n 4p "$0" >&2
    exit 2
fi
vorna=$(realpath "$1")
model=$(realpath "${2:-recordings/models/still-life.obj}")
script=$PWD/scripts/poster.sh
install_packages "${cluster_packages[@]}"

work=$(mktemp -d)
declare -A servers=()

# The processes that one has started, and itself.
with_children() {
    local child
    for child in $(ps -o pid= --ppid "$1"); do
        with_children "$child"
    done
    echo "$1"
}

stop_all() {
    local id
    for id in "${servers[@]}"; do
        kill -9 $(with_children "$id") 2>/dev/null || true
    done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap stop_all EXIT

mkdir -p /run/sshd "$work/poster" # the server's folder without rights
ssh-keygen -q -t ed25519 -N '' -f "$work/user"
ssh-keygen -q -t ed25519 -N '' -f "$work/host"
chmod 700 "$work"
port=$((20000 + RANDOM % 20000))
for host in one two; do
    port=$((port + 1))
    cat >"$work/server-$host" <<END
Port $port
ListenAddress 127.0.0.1
HostKey $work/host
AuthorizedKeysFile $work/user.pub
StrictModes no
UsePAM no
PidFile $work/$host.pid
MaxStartups 100
MaxSessions 100
END
    cat >>"$work/hosts" <<END
Host $host
    HostName 127.0.0.1
    Port $port
    IdentityFile $work/user
    IdentitiesOnly yes
    StrictHostKeyChecking no
    UserKnownHostsFile /dev/null
    LogLevel ERROR
    ConnectTimeout 5
END
    /usr/sbin/sshd -D -f "$work/server-$host" 2>"$work/$host.log" &
    servers[$host]=$!
done
export PARALLEL_SSH="ssh -F $work/hosts"
for host in one two; do
    until $PARALLEL_SSH "$host" true 2>/dev/null; do
        kill -0 "${servers[$host]}"
        sleep 0.2
    done
done

cd "$work/poster"
options=("$model" --size "${SIZE:-24000x16000}" --view front --edges)
"$vorna" render "${options[@]}" -o whole.png
step "12 parts on two hosts; host two is killed while it draws"
VORNA=$vorna HOSTS=one,two JOBS=1 "$script" poster.png 12 "${options[@]}" &
poster=$!
servers[poster]=$poster
drawing_on_two() {
    local id
    [ "$(find . -name 'poster.part-*.png' | wc -l)" -ge 2 ] || return 1
    for id in $(with_children "${servers[two]}"); do
        if [ "$(readlink "/proc/$id/exe")" = "$vorna" ]; then
            return 0
        fi
    done
    return 1
}
until drawing_on_two; do
    kill -0 $poster
    sleep 0.05
done
kill -9 $(with_children "${servers[two]}") 2>/dev/null || true # some may have ended
unset 'servers[two]'
echo "killed host two, with $(find . -name 'poster.part-*.png' | wc -l) parts there"
wait $poster
unset 'servers[poster]'
cmp whole.png poster.png
echo "the poster is the bytes of one command"
