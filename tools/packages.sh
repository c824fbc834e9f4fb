# Installing what is missing, and only that. Sourced by ./dev, which defines say, die and have.

build_packages=(g++ cmake ninja-build pkg-config libboost1.81-dev libcli11-dev libfmt-dev libpugixml-dev libzip-dev
    libsqlite3-dev libgtest-dev)
# The Python module is left out of the build where these are not.
python_packages=(python3-dev pybind11-dev python3-numpy)
# Tests of it that need more than is there are skipped.
python_test_packages=(python3-pytest mypy python3-pandas python3-jsonschema)
lint_packages=(clang-format clang-tidy)
fuzz_packages=(clang libclang-rt-14-dev)
# A browser for the pages of reports: where there is none, the test that looks at them is skipped.
page_packages=(chromium python3)
# Beside what is measured: the tools that one would take otherwise.
bench_packages=(libbenchmark-dev jq python3)
consumer_packages=(gcc python3-clang-14 abigail-tools xz-utils)
package_packages=(dpkg-dev file lintian man-db)
mutation_packages=(python3-clang-14)
docs_packages=(doxygen python3-markdown-it)

works_with_cxx20() {
    have "$1" && printf '#include <concepts>\n#include <span>\n' | "$1" -std=c++20 -fsyntax-only -x c++ - >/dev/null 2>&1
}

cmake_is_recent() {
    have cmake && [[ $(printf '3.25\n%s\n' "$(cmake --version | awk 'NR == 1 { print $3 }')" | sort -V | head -n 1) == 3.25 ]]
}

boost_is_recent() {
    local prefix
    for prefix in "${BOOST_ROOT:-}" "${Boost_ROOT:-}" /usr /usr/local; do
        [[ -n $prefix && -r $prefix/include/boost/version.hpp ]] || continue
        # The first one found counts, as it does for the compiler.
        [[ $(awk '$1 == "#define" && $2 == "BOOST_VERSION" { print $3 }' "$prefix/include/boost/version.hpp") -ge 108100 ]]
        return
    done
    return 1
}

# For systems that have no such packages to ask for.
declare -A headers=([libcli11-dev]=CLI/CLI.hpp [libfmt-dev]=fmt/format.h [libpugixml-dev]=pugixml.hpp
    [libzip-dev]=zip.h [libsqlite3-dev]=sqlite3.h [libgtest-dev]=gtest/gtest.h
    [libbenchmark-dev]=benchmark/benchmark.h)
has_header() { printf '#include <%s>\n' "$1" | "${CXX:-c++}" -E -x c++ - >/dev/null 2>&1; }

has_fuzzer() {
    local library
    for library in "$(clang++ -print-resource-dir 2>/dev/null)"/lib/*/libclang_rt.fuzzer*; do [[ -e $library ]] && return 0; done
    return 1
}

has_package() { [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

# is_there PACKAGE: whether what the package is for is on this machine, wherever it came from.
is_there() {
    case $1 in
        g++) works_with_cxx20 "${CXX:-c++}" || works_with_cxx20 g++ || works_with_cxx20 clang++ ;;
        cmake) cmake_is_recent ;;
        ninja-build) have ninja ;;
        chromium) have chromium || have chromium-browser || have google-chrome ;;
        pkg-config | doxygen | python3 | jq | clang-format | clang-tidy | valgrind) have "$1" ;;
        libboost1.81-dev) boost_is_recent ;;
        python3-numpy) /usr/bin/python3 -c 'import numpy' 2>/dev/null ;;
        python3-pytest) /usr/bin/python3 -c 'import pytest' 2>/dev/null ;;
        mypy) /usr/bin/python3 -c 'import mypy' 2>/dev/null ;;
        python3-jsonschema) /usr/bin/python3 -c 'import jsonschema' 2>/dev/null ;;
        python3-pandas) /usr/bin/python3 -c 'import pandas' 2>/dev/null ;;
        python3-markdown-it) /usr/bin/python3 -c 'import markdown_it' 2>/dev/null ;;
        python3-clang-14) /usr/bin/python3 -c 'import clang.cindex' 2>/dev/null ;;
        *) if have dpkg-query; then has_package "$1"; elif [[ -n ${headers[$1]:-} ]]; then has_header "${headers[$1]}"; else return 1; fi ;;
    esac
}

# other_boost: the installed Boost development packages that libboost1.81-dev would replace.
# dpkg-query fails when there is none at all, which is the ordinary case.
other_boost() {
    { dpkg-query -W -f '${db:Status-Status} ${Package}\n' 'libboost-dev' 'libboost1.*-dev' 2>/dev/null || true; } |
        awk '$1 == "installed" && $2 ~ /^libboost(1\.[0-9]+)?-dev$/ && $2 != "libboost1.81-dev" { print $2 }'
}

refuse_to_replace_boost() {
    local installed
    installed=$(other_boost)
    [[ -n $installed ]] || return 0
    die "libboost1.81-dev is needed, and these packages are in its way: ${installed//$'\n'/ }
  Nothing has been changed. Either
  - unpack Boost 1.81 or later somewhere and set BOOST_ROOT to that place, or
  - work in a container or on a machine without them, or
  - if nothing else here needs them, replace them yourself: apt-get install libboost1.81-dev"
}

as_root() {
    if [[ $(id -u) == 0 ]]; then
        "$@"
    elif have sudo; then
        sudo "$@"
    else
        die "installing packages needs root, and there is no sudo here; as root, run:
  apt-get install --no-install-recommends ${missing[*]}"
    fi
}

# need_packages PACKAGE...: installs those that are missing; removes and replaces nothing.
need_packages() {
    local package
    missing=()
    for package in "$@"; do is_there "$package" || missing+=("$package"); done
    ((${#missing[@]})) || return 0
    if ! have apt-get || ! have dpkg-query; then
        printf 'dev: not found here, and no apt to install them with (Debian names): %s\n' "${missing[*]}" >&2
        printf 'dev: going on; if the build does not find them either, install them and start again\n' >&2
        return 0
    fi
    if [[ " ${missing[*]} " == *" libboost1.81-dev "* ]]; then refuse_to_replace_boost; fi
    # apt refuses to run twice at a time.
    exec 8>"${TMPDIR:-/tmp}/ks-hmi-packages.lock"
    flock 8
    say "installing: ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q </dev/null ||
        printf 'dev: the package lists could not be refreshed; trying with those that are here\n' >&2
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends --no-remove "${missing[@]}" </dev/null ||
        die "apt could not install: ${missing[*]}
  What it said is above. This system must offer these packages, or what they are for must be
  installed some other way (Boost 1.81 or later: set BOOST_ROOT)."
    exec 8>&-
}
