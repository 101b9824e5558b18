# zlib comes with the cross compiler's packages, minizip and GoogleTest as sources that tools/setup fetches.
# All of it is other people's code: no warnings of ours, headers as system headers.

find_library(RYN_ZLIB_LIBRARY NAMES libz.a z REQUIRED)
