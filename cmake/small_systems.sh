# shellcheck shell=bash disable=SC2034
# Read by scripts/test-musl and scripts/test-uclibc: what is compiled, and how.
# The C++ language support's headers are taken one by one: others expect the big C library.
language_headers=(new typeinfo exception initializer_list cxxabi.h type_traits bits ext
                  cstddef cstdint cstring cstdarg cerrno climits)
mapfile -t sources < <(git ls-files core collections memory config net os events crypto | grep '\.cpp$')
language_options=(-std=c++17 -fno-sized-deallocation -fno-threadsafe-statics
                  -D_GNU_SOURCE -D_FILE_OFFSET_BITS=64 -Iinclude -I.)
library_options=(-fPIC -fvisibility=hidden -fvisibility-inlines-hidden -fno-semantic-interposition)

link_headers() {  # FROM TO NAME ...
  local from=$1 to=$2
  shift 2
  mkdir -p "$to"
  for name in "$@"; do ln -sfn "$from/$name" "$to/$name"; done
}

compile_library() {  # OBJECT_FOLDER COMPILER ...
  local folder=$1
  shift
  printf '%s\n' "${sources[@]}" |
    xargs -P "$(nproc)" -I{} sh -c 'source=$1; shift; exec "$@" -c "$source" -o "$0/$(echo "$source" | tr / _).o"' \
      "$folder" {} "$@" "${language_options[@]}" "${library_options[@]}"
}
