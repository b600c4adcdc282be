# Sourced by the scripts that show a sample device: makes its root, and runs programs in it.

# Builds the tool as it is installed on a device, into build/device.
build_tool() {
  mkdir -p build
  { cmake -S . -B build/run -G Ninja -DCMAKE_BUILD_TYPE=Release -DDEVFACTS_DOCS=OFF && cmake --build build/run &&
    cmake --install build/run --prefix "$PWD/build/device" --component runtime --strip &&
    cmake --install build/run --prefix "$PWD/build/device" --component tool --strip; } >build/run.log 2>&1 ||
    { cat build/run.log >&2; exit 1; }
}

# make_device ROOT: the files of the sample device, the tool, a shell with its commands, and the page in /www.
make_device() {
  local file
  mkdir -p "$1"/{bin,usr,run,dev}
  cp -R examples/device/. "$1"
  cp -R build/device/. "$1/usr"
  cp -R examples/page "$1/www"
  for file in $(ldd "$(command -v busybox)" build/device/bin/devfacts | grep -o ' /[^ )]*\|^\s/[^ )]*' | grep -v build/device | sort -u); do
    install -D "$file" "$1$file"
  done
  cp "$(command -v busybox)" "$1/bin"
  for file in sh cat head httpd nsenter; do ln -s busybox "$1/bin/$file"; done
}

# make_hostile ROOT: puts markup into everything that strangers can write.
make_hostile() {
  local markup='<img src=x onerror=document.title=1>&amp;"'\'
  sed -i "s|^product.name=.*|product.name=${markup//&/\\&}|; s|^product.hardware=.*|product.hardware=</dd><b>${markup//&/\\&}|" "$1/etc/product"
  echo "wireless.ra0.ssid=<script>document.title=2</script>" >>"$1/tmp/system.cfg"
  sed -i 's|^msgstr "Werksdaten"|msgstr "<i>Werksdaten"|' "$1/usr/share/po/de/status.po"
}
