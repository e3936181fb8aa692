# Whether this machine's kernel runs Wine. Sourced.

# Where the files of the emulated machine are, for kernels that do not.
machine_files=/usr/local/lib/lum-wine-machine
machine_version=1

kernel_runs_32_bit_programs() {
    # An interpreter registered for 32-bit programs makes them start, but not Wine.
    ! grep -qs '^interpreter .*qemu-i386' /proc/sys/fs/binfmt_misc/* &&
        /lib/ld-linux.so.2 --version >/dev/null 2>&1
}

machine_is_installed() {
    [[ $(cat "$machine_files/version" 2>/dev/null) == "$machine_version" ]] &&
        command -v qemu-system-x86_64 >/dev/null
}
