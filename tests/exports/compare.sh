#!/usr/bin/env bash
# compare.sh LIBRARY LIST...: the names that LIBRARY exports against those in the lists, both ways.
set -euo pipefail
library=$1
shift

listed=$(sed 's/#.*//; s/[[:space:]]//g; /^$/d' "$@" | sort)
doubled=$(uniq -d <<<"$listed")
# A sanitizer's own marks are not the library's.
exported=$(nm -D --defined-only "$library" | awk '{print $NF}' | grep -vE '^(__asan|__odr_asan|__ubsan|__tsan)' | sort)
missing=$(comm -23 <(uniq <<<"$listed") <(echo "$exported"))
surplus=$(comm -13 <(uniq <<<"$listed") <(echo "$exported"))

[ -z "$doubled" ] || printf 'listed twice:\n%s\n' "$doubled"
[ -z "$missing" ] || printf 'listed and not exported:\n%s\n' "$missing"
[ -z "$surplus" ] || printf 'exported and not listed:\n%s\n' "$surplus"
[ -z "$doubled$missing$surplus" ] || exit 1
echo "$(wc -l <<<"$exported") names, as listed"
