#!/usr/bin/env bash
# The installed core as a user gets it: `cmake --install` into a scratch prefix, only public
# headers there, an application built outside the tree with find_package(orx) (and the
# pkg-config file checked), then maintaind, the application and orxmaint run from the prefix:
# the application is registered, and maintaind stops on SIGTERM within 2 s.
#   install_test.sh BUILD_DIR APP_SOURCE_DIR
set -euo pipefail
BUILD=$1
APP_SOURCE=$2
. "$(dirname "$0")/common.sh"
need cmake pkg-config

PREFIX=$WORK/prefix
DOMAIN=218
cmake --install "$BUILD" --prefix "$PREFIX" >"$WORK/install.log" || fail "install: $(cat "$WORK/install.log")"

# Layout: programs, the plug-in where the programs look for it, the CMake package, the examples.
for file in bin/maintaind bin/orxmaint bin/orx-demo lib/liborxcm_dfx.so lib/libvcc_app.so \
  lib/cmake/orx/orxConfig.cmake lib/cmake/orx/orxConfigVersion.cmake \
  lib/pkgconfig/orx-vcc-app.pc share/orx/examples/radar/orx.json \
  include/vorx/vcc/app/runtime.h share/doc/orx/README.md lib/systemd/system/maintaind.service; do
  [ -e "$PREFIX/$file" ] || fail "not installed: $file"
done
# Public headers only: not the runtime's internal folder nor test helpers; every header they
# include is installed too; nlohmann-json only behind the targets that say so (orx::config, whose
# headers hand out the parsed document, the runtime's deployment parser, orx::protocol_json).
private=$(find "$PREFIX/include" -path '*/vcc/app/internal*' -o -name 'testing.h' -o -path '*/orx/test/*')
[ -z "$private" ] || fail "private headers installed: $private"
missing=$(grep -rhoE '^#include "[^"]+"' "$PREFIX/include" | sed -E 's/^#include "(.*)"/\1/' | sort -u |
  while read -r header; do [ -e "$PREFIX/include/$header" ] || echo "$header"; done)
[ -z "$missing" ] || fail "installed headers include headers that are not installed: $missing"
json_users=$(grep -rl 'nlohmann/' "$PREFIX/include" | sed "s|$PREFIX/include/||" | sort | tr '\n' ' ')
[ "$json_users" = "ara/kelda/common/orxConfigParser/config_reader.h \
ara/kelda/common/orxConfigParser/orx_config_parser.h orx/maintaind/json.h \
vorx/vcc/app/deployment_parser.h " ] || fail "headers pulling nlohmann-json: $json_users"
# The run path: the installed programs load our libraries from the prefix, not the build tree.
ldd "$PREFIX/bin/maintaind" | grep -q "libvcc_app.so => $PREFIX/" ||
  fail "maintaind does not load the installed libraries: $(ldd "$PREFIX/bin/maintaind")"

PKG_CONFIG_PATH=$PREFIX/lib/pkgconfig pkg-config --cflags --libs orx-vcc-app >"$WORK/pc.txt" ||
  fail "pkg-config orx-vcc-app: $(cat "$WORK/pc.txt")"
grep -q -- "-lvcc_app" "$WORK/pc.txt" || fail "pkg-config libs: $(cat "$WORK/pc.txt")"

# The out-of-tree build, the commands a user types.
cmake -S "$APP_SOURCE" -B "$WORK/app" -DCMAKE_PREFIX_PATH="$PREFIX" >"$WORK/app.log" 2>&1 ||
  fail "configure against the prefix: $(cat "$WORK/app.log")"
cmake --build "$WORK/app" >>"$WORK/app.log" 2>&1 || fail "build: $(cat "$WORK/app.log")"

export ORX_DDS_DOMAIN=$DOMAIN
ORX_CONFIG=$WORK/none.json "$PREFIX/bin/maintaind" --db "$WORK/registry.db" >"$WORK/maintaind.log" 2>&1 &
DAEMON=$!
PIDS+=("$DAEMON")
wait_for 20 grep -q "Maintaind started" "$WORK/maintaind.log" ||
  fail "maintaind did not start: $(cat "$WORK/maintaind.log")"

"$WORK/app/installed_app" "$PREFIX/share/orx/examples/radar/orx.json" RadarService \
  >"$WORK/app-run.log" 2>&1 &
PIDS+=("$!")
registered() {
  "$PREFIX/bin/orxmaint" --domain "$DOMAIN" --json nodes --app radar >"$WORK/nodes.json" 2>&1 &&
    grep -Eq '"online": ?true' "$WORK/nodes.json"
}
wait_for 30 registered || fail "the application was not registered: $(cat "$WORK/nodes.json" \
  "$WORK/app-run.log" "$WORK/maintaind.log")"

# SIGTERM: maintaind withdraws its offers, stores the registry and exits 0 within 2 s.
kill -TERM "$DAEMON"
stopped() { ! kill -0 "$DAEMON" 2>/dev/null; }
wait_for 2 stopped || fail "maintaind still runs 2 s after SIGTERM"
wait "$DAEMON" || fail "maintaind exited with $?: $(cat "$WORK/maintaind.log")"
grep -q "Maintaind stopping" "$WORK/maintaind.log" || fail "no stop line: $(cat "$WORK/maintaind.log")"
# The registry was stored on the way out: a new daemon on the same file loads the application.
ORX_CONFIG=$WORK/none.json "$PREFIX/bin/maintaind" --db "$WORK/registry.db" >"$WORK/again.log" 2>&1 &
PIDS+=("$!")
wait_for 20 grep -q "Registry loaded\[file=$WORK/registry.db, nodes=1" "$WORK/again.log" ||
  fail "registry not stored at SIGTERM: $(cat "$WORK/again.log")"
echo "PASS"
