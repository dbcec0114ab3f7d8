# What ./run, ./test and .ci/run have in common; to be sourced in the project's folder.

# The Debian packages that building, running and testing need.
packages=(cmake ninja-build g++ pkg-config libplist-dev libexpat1-dev libicu-dev libblkid-dev nettle-dev libsystemd-dev libsdbus-c++-dev
    qt6-base-dev qt6-tools-dev libqt6opengl6-dev libgl1-mesa-dev qt6-image-formats-plugins fonts-dejavu-core librsvg2-bin)
package_packages=(dpkg-dev file)
package_check_packages=(lintian desktop-file-utils appstream man-db)
disk_packages=(apfsprogs btrfs-progs dosfstools e2fsprogs exfatprogs fdisk parted udev udisks2 xfsprogs)
service_packages=(dbus dbus-user-session systemd polkitd pkexec python3-dbusmock ansible-core python3-apt)
picture_packages=(fonts-wqy-microhei)
test_packages=(clang clang-format clang-tidy libclang-rt-14-dev libgtest-dev libgmock-dev libbenchmark-dev
    nlohmann-json3-dev procps strace python3 dbus-daemon xvfb openbox xdotool "${picture_packages[@]}"
    "${disk_packages[@]}" "${package_packages[@]}" "${service_packages[@]}")

# install_packages [PACKAGE...]: installs the missing ones among the packages named and those that everything needs;
# says nothing when there are none.
install_packages()
{
    local package missing=()
    for package in "${packages[@]}" "$@"; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [[ ${#missing[@]} -eq 0 ]] && return
    local as_root=()
    [[ $(id -u) -eq 0 ]] || as_root=(sudo)
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends \
        "${missing[@]}" >/dev/null
}

# quietly NAME COMMAND...: runs a command and shows what it printed only when it fails.
quietly()
{
    local name=$1 log
    shift
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        echo "$name failed" >&2
        return 1
    fi
    rm -f "$log"
}

# build PRESET: configures and builds what has changed since the last time.
build()
{
    quietly "Configuring $1" cmake --preset "$1"
    quietly "Building $1" cmake --build --preset "$1"
}
