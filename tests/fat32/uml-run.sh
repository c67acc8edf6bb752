#!/bin/bash
# Boots a user-mode Linux guest that runs JOBDIR/scenario.sh against a fresh FAT32 volume.
#
#   uml-run.sh JOBDIR [IMAGE_MB]
#
# JOBDIR must hold scenario.sh; guest-init.sh tells what a scenario can use and which result files it
# leaves in JOBDIR. The guest sees the host's / (hostfs) but has its own /dev, /run and /mnt, so JOBDIR
# and the programs under test must lie elsewhere, on paths without spaces. The console goes to stdout
# and to JOBDIR/console.log. Environment: KESTRUNE_UML_TIMEOUT (seconds, default 300),
# KESTRUNE_UML_MEM (guest memory in MB, default 512).
# Exit status: 0 the scenario ran (its own status is in JOBDIR/scenario.status); 77 UML cannot run on
# this machine (the reason is on stderr, for a test to skip with); 124 the guest hung and was killed;
# 1 anything else.
set -u
skip() { echo "uml-run: cannot run user-mode Linux: $*" >&2; exit 77; }
fail() { echo "uml-run: $*" >&2; exit 1; }

[ $# -ge 1 ] || fail "usage: uml-run.sh JOBDIR [IMAGE_MB]"
here=$(cd "$(dirname "$0")" && pwd) job=$(realpath -m -- "$1") image_mb=${2:-64} mem_mb=${KESTRUNE_UML_MEM:-512}
case $job$here in *[[:space:]]*) fail "paths must not contain spaces: $job";; esac
case $job/ in /dev/* | /run/* | /mnt/* | /proc/* | /sys/*) fail "the guest cannot see $job";; esac
[ -f "$job/scenario.sh" ] || fail "$job/scenario.sh is missing"

# Everything the guest runs comes from the host's /, so the host must have it.
for tool in linux.uml insmod mkfs.vfat fsck.vfat dmsetup perl timeout; do
    PATH=$PATH:/sbin:/usr/sbin command -v "$tool" >/dev/null ||
        skip "$tool is not installed (packages: user-mode-linux kmod dosfstools dmsetup)"
done
version=$(linux.uml --version 2>/dev/null | tail -n1)
[ -f "/usr/lib/uml/modules/$version/kernel/fs/fat/vfat.ko" ] ||
    skip "no modules for UML kernel '$version' in /usr/lib/uml/modules"

# UML keeps the guest's memory in a file in $TMPDIR, /dev/shm or /tmp: pick one with room for all of
# it that allows executable mappings.
memdir=
for dir in ${TMPDIR:-} /dev/shm /tmp; do
    [ -d "$dir" ] && [ -w "$dir" ] || continue
    [[ ",$(findmnt -no OPTIONS -T "$dir" 2>/dev/null)," == *,noexec,* ]] && continue
    [ "$(df -Pm "$dir" | awk 'NR == 2 { print $4 }')" -ge "$mem_mb" ] && { memdir=$dir; break; }
done
[ -n "$memdir" ] || skip "no writable, exec-mountable folder with $mem_mb MB free among \$TMPDIR, /dev/shm, /tmp"

# A fresh sparse image for the volume, and no results of an earlier run.
rm -f "$job"/*.status "$job"/*.out "$job"/*.err "$job/manifest.txt" "$job/fat32.img" &&
    mkdir -p "$job/uml" && truncate -s "${image_mb}M" "$job/fat32.img" ||
    skip "cannot create a $image_mb MB image in $job"

# Unknown name=value parameters reach PID 1 as environment variables: KESTRUNE_JOB tells it JOBDIR.
# `timeout` runs UML in a process group of its own and kills that whole group, UML's helper processes
# included, when time is up.
TMPDIR=$memdir timeout -k 10 "${KESTRUNE_UML_TIMEOUT:-300}" linux.uml \
    mem="${mem_mb}M" rootfstype=hostfs rootflags=/ rw init="$here/guest-init.sh" quiet \
    ubd1="$job/fat32.img" con=null con0=null,fd:1 uml_dir="$job/uml" KESTRUNE_JOB="$job" \
    </dev/null 2>&1 | tee "$job/console.log"
status=${PIPESTATUS[0]}

[ "$status" = 124 ] || [ "$status" = 137 ] && { echo "uml-run: guest killed after the timeout" >&2; exit 124; }
[ -f "$job/guest.status" ] || skip "linux.uml exited with $status before the guest started (see $job/console.log)"
[ -f "$job/scenario.status" ] || fail "the guest stopped early: $(tail -n1 "$job/guest.status")"
exit 0
