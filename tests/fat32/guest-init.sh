#!/bin/bash
# PID 1 of the user-mode Linux guest that uml-run.sh boots. It builds a FAT32 volume on /dev/ubdb behind
# a device-mapper device (so that faults can be switched in), mounts it at $IPOD, runs JOBDIR/scenario.sh
# in a subshell, then checks what really reached the device and powers off.
#
# The scenario runs in $IPOD, with the host's files at their usual paths, and can use:
#   $JOB $IPOD $DEV $RAW       job folder, mount point, dm device, the device below it
#   $SCRATCH $SECTORS          a guest-only tmpfs folder, the device's size in 512-byte sectors
#   run NAME CMD...            run CMD, keeping JOB/NAME.out, .err and .status (add & to run it aside)
#   wait_until SECONDS CMD...  poll every 10 ms until CMD succeeds; fails after SECONDS
#   at_least N GLOB            succeed when N paths match GLOB, e.g. wait_until 9 at_least 500 'Playlists/*'
#   populate SRC_DIR           copy a tree prepared on the host onto the volume, then sync
#   warm_cache                 read the whole device, so that a run reads nothing from it any more
# Faults, each a new table for the dm device (dm_table LINE... switches in any other):
#   pull_cable                 every read and write fails from now on (`error` target)
#   refuse_writes              reads work, writes fail (`flakey` with error_writes)
#   bad_sectors FILE           8 unreadable sectors where FILE's data starts; drops the caches
#   slow_device MS             every I/O waits MS ms more (`delay`; at least one 10 ms tick here)
#   arm FAULT [ARGS]; fire     load a fault now and switch it in later, at once
# and, without device-mapper:
#   throttle MBPS [IOPS]       cap the I/O that the scenario's processes submit themselves (cgroup
#                              io.max): fsync and O_DIRECT, not the writeback that syncfs waits for
#   lazy_unmount               detach the volume (umount -l) while programs still use it
#   fill_volume [KB]           fill the free space with one file, `filler`, but for KB kilobytes
# JOBDIR/mount-options, if present, replaces the mount options "utf8,shortname=mixed"; JOBDIR/mkfs-options,
# if present, adds options to mkfs.vfat (such as a cluster size).
# Results in JOBDIR: guest.status (progress), scenario.out/.err/.status, fsck.out/.status
# (fsck.vfat -n of the raw device afterwards), manifest.txt ("SHA1 SIZE PATH" per file, from a
# read-only mount of the raw device, so as the kernel reads it before any repair).
export PATH=/usr/sbin:/usr/bin:/sbin:/bin DM_DISABLE_UDEV=1 LC_ALL=C.UTF-8
export JOB=$KESTRUNE_JOB IPOD=/mnt/ipod DEV=/dev/mapper/ipod SCRATCH=/mnt/scratch RAW=/dev/ubdb
note() { local up; read -r up _ </proc/uptime 2>/dev/null; echo "[${up:-0}] $*" | tee -a "$JOB/guest.status" >/dev/console; }
# Writes to hostfs sit in the guest's page cache until synced: sync, then power off (PID 1 must not exit).
trap 'sync; echo o >/proc/sysrq-trigger; sleep 60' EXIT
note booted

# Guest-private mounts: the host's /dev, /run and /mnt are never written. /mnt is a tmpfs, so a
# program that writes below a vanished mount point writes there.
mount -t proc proc /proc && mount -t sysfs sysfs /sys && mount -t tmpfs -o size=256m tmpfs /mnt &&
    mount -t tmpfs tmpfs /run && mkdir /mnt/dev "$IPOD" "$SCRATCH" /mnt/check &&
    mount -t devtmpfs devtmpfs /mnt/dev && mount --bind /mnt/dev /dev && ln -s /proc/self/fd /dev/fd ||
    { note "mounting failed"; exit; } # bash's <(...) needs /dev/fd, which only udev would make
mods=/usr/lib/uml/modules/$(uname -r)/kernel
for m in fs/nls/nls_cp437 fs/nls/nls_iso8859-1 fs/nls/nls_utf8 fs/fat/fat fs/fat/vfat \
    drivers/md/dm-mod drivers/md/dm-flakey drivers/md/dm-delay; do
    insmod "$mods/$m.ko" || { note "insmod $m failed"; exit; }
done
SECTORS=$(blockdev --getsz $RAW)
options=$(cat "$JOB/mount-options" 2>/dev/null || echo utf8,shortname=mixed)
read -ra format_options <"$JOB/mkfs-options" 2>/dev/null || format_options=()
dmsetup create ipod --table "0 $SECTORS linear $RAW 0" && mkfs.vfat -F 32 "${format_options[@]}" -n IPOD $DEV >/dev/null &&
    mount -t vfat -o "$options" $DEV "$IPOD" || { note "creating the volume failed"; exit; }
note "mounted $DEV at $IPOD with $options"

# Starting a process costs about 60 ms in UML: the helpers below start none while they poll.
run() { "${@:2}" >"$JOB/$1.out" 2>"$JOB/$1.err"; echo $? >"$JOB/$1.status"; note "$1 exited with $(<"$JOB/$1.status")"; }
exec {nap}<> <(:) # a pipe that nobody writes to: `read -t` on it sleeps
wait_until() {
    local end=$((SECONDS + $1))
    until "${@:2}"; do [ $SECONDS -lt $end ] || return 1; read -rt 0.01 -u $nap; done
}
# shellcheck disable=SC2206 # GLOB is expanded on purpose; IFS= keeps spaces in it
at_least() { local IFS='' && local -a m && shopt -s nullglob && m=($2) && shopt -u nullglob && [ ${#m[@]} -ge "$1" ]; }
populate() { cp -r "$1/." "$IPOD/" && sync; }
# With FAT and folders cached, a run does no I/O before its final flush, and cannot trip over a fault
# before then.
warm_cache() { cat $DEV >/dev/null; }
# Dirty blocks go to the device within 10 ms, in whatever order the kernel picks, instead of at the
# run's own flushes: a cut then finds some of a step's blocks written and others not.
eager_writeback() { echo 0 >/proc/sys/vm/dirty_expire_centisecs && echo 1 >/proc/sys/vm/dirty_writeback_centisecs; }
# A fault is loaded into the dm device's inactive slot, then switched in by one `dmsetup resume`, which
# suspends without flushing (--noflush) or syncing the volume first (--nolockfs). `arm` only loads it,
# so that `fire` switches it in with one process (about 60 ms). Leaving a `delay` table submits the
# I/O it holds at once: that I/O still reaches the device.
dm_table() { printf '%s\n' "$@" | dmsetup load ipod && note "table loaded: $*" && { [ -n "${ARMING:-}" ] || fire; }; }
arm() { ARMING=1 "$@"; }
fire() { dmsetup resume --noflush --nolockfs ipod && note "table switched"; }
pull_cable() { dm_table "0 $SECTORS error"; }
refuse_writes() { dm_table "0 $SECTORS flakey $RAW 0 0 1 1 error_writes"; }
slow_device() { dm_table "0 $SECTORS delay $RAW 0 $1"; }
bad_sectors() {
    # FIBMAP (ioctl 1) gives the file's first block, FIGETBSZ (2) the block size; perl-base is essential.
    local first
    first=$(perl -e 'open(my $f, "<", $ARGV[0]) or die "$!\n"; my ($b, $z) = (pack("i!", 0), pack("i!", 0));
        ioctl($f, 1, $b) && ioctl($f, 2, $z) or die "$!\n"; print unpack("i!", $b) * unpack("i!", $z) / 512' "$1") ||
        { note "no blocks found for $1"; return 1; }
    dm_table "0 $first linear $RAW 0" "$first 8 error" \
        "$((first + 8)) $((SECTORS - first - 8)) linear $RAW $((first + 8))" &&
        sync && echo 3 >/proc/sys/vm/drop_caches
}
throttle() {
    local cg=/mnt/cgroup
    { mountpoint -q $cg || { mkdir -p $cg && mount -t cgroup2 none $cg; }; } && echo +io >$cg/cgroup.subtree_control &&
        mkdir -p $cg/slow && echo $BASHPID >$cg/slow/cgroup.procs &&
        echo "$(dmsetup info -c --noheadings -o major,minor ipod) wbps=$(($1 << 20)) rbps=$(($1 << 20))" \
            "wiops=${2:-max} riops=${2:-max}" >$cg/slow/io.max
}
lazy_unmount() { umount -l "$IPOD" && note "lazily unmounted $IPOD"; }
fill_volume() { dd if=/dev/zero of="$IPOD/filler" bs=1M 2>/dev/null; truncate -s "-${1:-0}K" "$IPOD/filler"; sync; }

(cd "$IPOD" && . "$JOB/scenario.sh") </dev/null >"$JOB/scenario.out" 2>"$JOB/scenario.err"
echo $? >"$JOB/scenario.status"
note "scenario exited with $(cat "$JOB/scenario.status")"

# What reached the device: the raw device, bypassing whatever table the scenario left in place.
umount "$IPOD" 2>/dev/null; dmsetup remove --force ipod || note "dmsetup remove failed"
fsck.vfat -n $RAW >"$JOB/fsck.out" 2>&1; echo $? >"$JOB/fsck.status"
mount -t vfat -o ro,utf8 $RAW /mnt/check || { note "read-only mount failed"; exit; }
# Few processes: each fork costs milliseconds in UML. FAT names hold no newline or backslash, so
# sha1sum's "HASH  NAME" lines need no unescaping.
cd /mnt/check && mapfile -d '' files < <(find . -type f -printf '%P\0' | sort -z)
declare -A sums
if [ ${#files[@]} -gt 0 ]; then
    while IFS= read -rd '' line; do sums[${line#*  }]=${line%%  *}; done < <(sha1sum -z -- "${files[@]}" 2>/dev/null)
    mapfile -t sizes < <(stat -c %s -- "${files[@]}")
fi
for i in "${!files[@]}"; do echo "${sums[${files[i]}]:-unreadable} ${sizes[i]} ${files[i]}"; done >"$JOB/manifest.txt"
cd / && umount /mnt/check
note "done"
