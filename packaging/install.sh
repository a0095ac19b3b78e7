# shellcheck shell=bash
# For run.sh and test.sh to source: the Debian packages that the project needs.

# InstallPackages GROUP... - installs what is missing of those groups in packaging/debian-packages.
InstallPackages() {
  local sList sGroups="$*" sPackage
  sList="$(dirname "${BASH_SOURCE[0]}")/debian-packages"
  local -a asMissing=()
  while read -r sPackage; do
    if [ "$(dpkg-query -W -f '${db:Status-Status}' "$sPackage" 2>/dev/null)" != installed ]; then
      asMissing+=("$sPackage")
    fi
  done < <(awk -v groups=" $sGroups " '
    /^\[/ { wanted = index(groups, " " substr($0, 2, length($0) - 2) " ") }
    wanted && /^[a-z0-9]/' "$sList")
  if [ ${#asMissing[@]} -eq 0 ]; then
    return
  fi
  if [ "$(id -u)" -ne 0 ]; then
    echo "Packages are missing. Install them as root, then start again:" >&2
    echo "  apt-get install --no-install-recommends ${asMissing[*]}" >&2
    return 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  apt-get update &&
    apt-get install --yes --no-install-recommends "${asMissing[@]}"
}
