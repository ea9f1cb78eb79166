# Sourced by the build scripts: compiles through ccache when it is installed, with paths taken
# relative to the checkout, so that a fresh clone reuses what an earlier one compiled.
TAVREL_LAUNCHER=()
if command -v ccache >/dev/null 2>&1; then
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$root}"
  export CCACHE_NOHASHDIR=1
  TAVREL_LAUNCHER=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
