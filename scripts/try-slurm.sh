#!/usr/bin/env bash
# Draws a poster by a cluster of Slurm on this machine: a controller and three nodes on the loopback, each with folders and ports of
# its own. A node is killed in the middle, a second poster is cancelled and resumed; both must be the bytes of one command.
# usage: scripts/try-slurm.sh VORNA [MODEL]; as root on Debian 12. Installs slurm-wlm and munge, and stops all that it started.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
if [ $# -lt 1 ]; then
    sed -n 4p "$0" >&2
    exit 2
fi
vorna=$(realpath "$1")
model=${2:-recordings/models/still-life.obj}
model=$(realpath "$model")
install_packages "${cluster_packages[@]}"

work=$(mktemp -d)
declare -A servers=() # process ids by name
chmod 755 "$work"
export SLURM_CONF=$work/slurm.conf

# The processes of this cluster on a node, or on all: its jobs have the configuration and the node in their environment.
processes_of() {
    local file
    grep -lzsx "SLURM_CONF=$SLURM_CONF" /proc/[0-9]*/environ | while read -r file; do
        if grep -qzs "^SLURMD_NODENAME=${1-}" "$file"; then
            file=${file#/proc/}
            echo "${file%/environ}"
        fi
    done
}

stop_all() {
    local id
    for id in "${servers[@]}" $(processes_of); do
        kill -9 "$id" 2>/dev/null || true
    done
    wait 2>/dev/null || true
    if [ "${KEEP-}" ]; then
        echo "kept $work"
    else
        rm -rf "$work"
    fi
}
trap stop_all EXIT

# usage: start NAME COMMAND...
start() {
    local name=$1
    shift
    "$@" >"$work/$name.out" 2>&1 &
    servers[$name]=$!
}

# usage: wait_for WHAT SECONDS COMMAND...
wait_for() {
    local what=$1 end=$((SECONDS + $2))
    shift 2
    until "$@"; do
        if [ $SECONDS -ge $end ]; then
            echo "expected $what in time" >&2
            squeue >&2 || true
            sinfo >&2 || true
            tail -n 20 "$work"/*.out "$work"/*.log >&2
            exit 1
        fi
        sleep 0.2
    done
}

port=$((20000 + RANDOM % 20000))
dd if=/dev/urandom of="$work/munge.key" bs=128 count=1 status=none
chmod 600 "$work/munge.key"
cat >"$SLURM_CONF" <<END
ClusterName=poster
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmctldPort=$port
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$work/munge.socket
CredType=cred/munge
StateSaveLocation=$work/state
SlurmctldPidFile=$work/controller.pid
SlurmctldLogFile=$work/controller.log
SlurmdSpoolDir=$work/spool-%n
SlurmdPidFile=$work/%n.pid
SlurmdLogFile=$work/%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SwitchType=switch/none
MpiDefault=none
SlurmdTimeout=10
JobRequeue=1
MaxArraySize=10000
SchedulerParameters=sched_interval=1,batch_sched_delay=0,bf_interval=1
MinJobAge=600
NodeName=one NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$((port + 1)) CPUs=1
NodeName=two NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$((port + 2)) CPUs=1
NodeName=three NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$((port + 3)) CPUs=1
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
END
mkdir "$work/state" "$work/poster"

step "a controller and three nodes"
start munged munged --foreground --force --key-file="$work/munge.key" --socket="$work/munge.socket" --pid-file="$work/munged.pid" \
    --log-file="$work/munged.log" --seed-file="$work/munged.seed" --num-threads=2
wait_for "an authentication service" 20 test -S "$work/munge.socket"
start controller slurmctld -D -f "$SLURM_CONF"
for node in one two three; do
    start $node slurmd -D -N $node -f "$SLURM_CONF"
done
all_idle() {
    [ "$(sinfo --noheader --format=%T --Node 2>/dev/null | grep -c '^idle$')" -eq 3 ]
}
wait_for "three idle nodes" 60 all_idle
sinfo --Node --long

cd "$work/poster"
options=(--size "${SIZE:-24000x16000}" --view front --edges --threads 1)
"$vorna" render "$model" "${options[@]}" -o whole.png

# usage: submit; sets array and joined, the numbers of the jobs
script=$OLDPWD/scripts/poster.slurm
submit() {
    "$vorna" render "$model" "${options[@]}" -o poster.png --plan 12 --plan-lines >plan
    { read -r array && read -r joined; } < <(sh "$script" plan --output=part-%a.log)
}
part_count() {
    find . -name 'poster.part-*.png' | wc -l
}
parts_there() {
    [ "$(part_count)" -ge "$1" ]
}
is_state() {
    [ "$(scontrol show job "$1" --oneliner | grep -o 'JobState=[A-Z]*')" = "JobState=$2" ]
}
# Sets lost to the part that a node draws.
runs_on() {
    lost=$(squeue --noheader --states=RUNNING --format=%i --nodelist="$1")
    [ "$lost" ]
}

step "a poster of 12 parts; node two is killed while it draws"
submit
wait_for "two parts" 120 parts_there 2
wait_for "a part on node two" 60 runs_on two
kill -9 "${servers[two]}" $(processes_of two)
unset 'servers[two]'
echo "killed node two, which drew $lost, with $(part_count) parts there"
wait_for "the image" 300 is_state "$joined" COMPLETED
sinfo --Node --long
# A part may end between being listed and the end of its node: then the next one of the node is drawn again.
scontrol show job "$array" --oneliner | grep 'Restarts=[1-9]' |
    grep -o -e 'ArrayTaskId=[0-9]*' -e 'JobState=[A-Z]*' -e 'Restarts=[0-9]*' -e ' NodeList=[a-z]*'
cmp whole.png poster.png

step "the same poster, cancelled and resumed"
rm poster*.png
submit
wait_for "three parts" 120 parts_there 3
scancel "$array" "$joined"
wait_for "an end" 60 is_state "$joined" CANCELLED
sleep 1
there=$(part_count)
ls -i poster.part-*.png >before
submit
missing=$(($(wc -l <plan) - 1))
echo "cancelled with $there parts there, $missing are missing"
[ $((there + missing)) -eq 12 ] && [ "$missing" -lt 12 ]
wait_for "the image" 300 is_state "$joined" COMPLETED
cmp whole.png poster.png
ls -i $(awk '{print $2}' before) | cmp - before # none of them was drawn again
echo "both posters are the bytes of one command"
