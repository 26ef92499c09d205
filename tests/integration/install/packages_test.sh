#!/usr/bin/env bash
# `cpack -G DEB` of the build tree makes the three packages, each with the files that are its job
# and the dependencies on Debian's libraries that dpkg-shlibdeps finds.
#   packages_test.sh BUILD_DIR
set -euo pipefail
BUILD=$1
. "$(dirname "$0")/common.sh"
need cpack dpkg-deb dpkg-shlibdeps

cpack -G DEB --config "$BUILD/CPackConfig.cmake" -B "$WORK" >"$WORK/cpack.log" 2>&1 ||
  fail "cpack -G DEB: $(tail -20 "$WORK/cpack.log")"

# expect PACKAGE FILE...: the package exists and lists every FILE.
expect() {
  local name=$1
  shift
  local deb
  deb=$(find "$WORK" -maxdepth 1 -name "${name}_*.deb" | head -1)
  [ -n "$deb" ] || fail "no package $name in: $(ls "$WORK")"
  dpkg-deb -c "$deb" >"$WORK/$name.list"
  for file in "$@"; do
    grep -q "\.$file\$" "$WORK/$name.list" || fail "$name lacks $file"
  done
  echo "$name: $(dpkg-deb -f "$deb" Depends)"
}
expect orx-runtime /usr/lib/liborxcm_dfx.so /usr/lib/libvcc_app.so /usr/bin/orx-demo
expect orx-dev /usr/lib/cmake/orx/orxConfig.cmake /usr/lib/pkgconfig/orx-vcc-app.pc
expect orx-maintaind /usr/bin/maintaind /usr/bin/orxmaint \
  /usr/lib/systemd/system/maintaind.service
dpkg-deb -f "$(find "$WORK" -maxdepth 1 -name 'orx-runtime_*.deb')" Depends | grep -q libddsc ||
  fail "orx-runtime does not depend on Cyclone DDS"
echo "PASS"
