# Host side of the emulated machine: a Linux with 32-bit programs, for kernels that refuse them.
# It sees this machine's file system at the same paths, so only commands have to be passed.
# Sourced by run-wine, which sets $scripts and $state and sources kernel.sh.

machine_runs() {
    local pid
    pid=$(cat "$state/pid" 2>/dev/null) && [[ -n $pid ]] &&
        grep -qszF "$state/control" "/proc/$pid/cmdline"
}

machine_send() {
    # Opening for reading too never blocks, even when the machine has just gone.
    echo "$1" 1<>"$state/control.in"
}

with_machine_lock() {
    local lock
    mkdir -p "$state"
    exec {lock}>"$state/lock"
    flock -w 300 "$lock" || fail "another run-wine holds the emulated machine"
    "$@"
    exec {lock}>&-
}

close_inherited_descriptors() {
    local descriptor
    for descriptor in /proc/$BASHPID/fd/*; do
        descriptor=${descriptor##*/}
        (( descriptor <= 2 || descriptor == 255 )) || eval "exec $descriptor>&-" 2>/dev/null || true
    done
}

machine_make_image() {
    [[ -e $state/prefixes.img ]] && return
    truncate -s 16G "$state/prefixes.new"
    PATH=$PATH:/usr/sbin:/sbin mkfs.ext4 -q -m 0 "$state/prefixes.new" || fail "cannot make $state/prefixes.img"
    mv "$state/prefixes.new" "$state/prefixes.img"
}

machine_make_initramfs() {
    local root=$state/initramfs.d
    rm -rf "$root"
    mkdir -p "$root"/{bin,dev,etc,host,modules,proc,sys}
    cp "$machine_files/busybox" "$root/bin/"
    cp "$machine_files"/modules/* "$root/modules/"
    cp "$scripts/wine/machine-init" "$root/init"
    printf '%s' "$state" > "$root/etc/state"
    printf '%s' "$scripts" > "$root/etc/scripts"
    chmod 755 "$root/init"
    (cd "$root" && find . | bin/busybox cpio -o -H newc -R 0:0 2>/dev/null) > "$state/initramfs"
    rm -rf "$root"
}

machine_launch() {
    (
        close_inherited_descriptors
        cd /
        # The shared directories hold other file systems too; without remap their inode numbers could collide.
        # One processor: with two, each change of an address space makes one wait for the other, which costs three times the work.
        exec setsid qemu-system-x86_64 -nodefaults -no-user-config -display none -no-reboot \
            -machine q35 -accel tcg,thread=multi,tb-size=512 -cpu qemu64 -smp 1 -m 2048 \
            -kernel "$machine_files/vmlinux" -initrd "$state/initramfs" \
            -append "console=ttyS0 quiet mitigations=off panic=-1" -serial "file:$state/console.log" \
            -fsdev local,id=root,path=/,security_model=none,multidevs=remap \
            -device virtio-9p-pci,fsdev=root,mount_tag=root \
            -fsdev local,id=usr,path=/usr,security_model=none,multidevs=remap,readonly=on \
            -device virtio-9p-pci,fsdev=usr,mount_tag=usr \
            -drive "if=none,id=prefixes,format=raw,cache=unsafe,discard=unmap,file=$state/prefixes.img" \
            -device virtio-blk-pci,drive=prefixes \
            -chardev "pipe,id=control,path=$state/control" -device virtio-serial-pci \
            -device virtserialport,chardev=control,name=control
    ) </dev/null >"$state/qemu.log" 2>&1 &
    echo $! > "$state/pid"
}

machine_await_ready() {
    local deadline=$((SECONDS + 180))
    while [[ ! -e $state/ready ]]; do
        sleep 0.1
        machine_runs_or_starts || fail "the emulated machine ended: $(tail -n 1 "$state/qemu.log" "$state/console.log" | tr -s '\n' ' ')"
        if (( SECONDS > deadline )); then
            machine_kill
            fail "the emulated machine does not start, see $state/console.log"
        fi
    done
}

# Until the fork has become the emulator its command line is that of this script.
machine_runs_or_starts() {
    kill -0 "$(< "$state/pid")" 2>/dev/null
}

machine_start_locked() {
    machine_runs && return
    machine_is_installed ||
        fail "this kernel refuses 32-bit programs and the emulated machine is missing: run scripts/install-windows-toolchain"
    rm -f "$state"/{ready,pid,control.in,control.out}
    mkdir -p "$state/jobs"
    mkfifo "$state/control.in" "$state/control.out"
    machine_make_image
    machine_make_initramfs
    machine_launch
    machine_await_ready
}

machine_kill() {
    local pid
    pid=$(< "$state/pid")
    kill -KILL "$pid" 2>/dev/null || true
    rm -f "$state/pid" "$state/ready"
}

machine_stop_locked() {
    local deadline=$((SECONDS + 30))
    machine_runs || return 0
    machine_send stop
    while machine_runs && (( SECONDS < deadline )); do sleep 0.1; done
    if machine_runs; then machine_kill; fi
    rm -f "$state/pid" "$state/ready"
}

machine_start() {
    if ! { machine_runs && [[ -e $state/ready ]]; }; then with_machine_lock machine_start_locked; fi
}

machine_stop() { with_machine_lock machine_stop_locked; }
