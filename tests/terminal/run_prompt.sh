#!/bin/bash
# Types commands at the terminal's prompt, right and wrong ones, and compares what it says.  Usage: run_prompt.sh TERMINAL
terminal=$1 options=()
data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
failed=0

# <commands> <text that must appear>...
session() {
    local input=$1 output text
    shift
    output=$(printf '%b' "$input" | "$terminal" --data "$data" "${options[@]}" 2>&1) || { echo "FAILED: exit code $? of: $input"; failed=1; }
    for text in "$@"; do
        grep -qF -- "$text" <<<"$output" || { printf 'FAILED: no "%s" after: %s\n%s\n' "$text" "$input" "$output"; failed=1; }
    done
}

session 'help\naccounts\nquit\n' 'trade ACCOUNT CODE SHARES' '880001    李明' 'Ended.'
session '' 'securities. Try' 'Ended.'
session 'open 资金 880002\nshow 资金\n' '工商银行'  'awake; 2 queries, 2 answers' 'Ended.'
session 'open a 880001 /none.dll\nshow a\nsleep\nsleep a b\nfrob "x y\nfault x\ntrade 1 2 x\ntrade 1 2 3\n\n  \nfault delay 1 999999\n' \
    'Error: the page cannot be created' 'Error: there is no page a' 'Usage: sleep PAGE' 'Unknown command "frob"' \
    'Error: unknown fault' 'Error: SHARES must be a number, not "x"' 'Error: no such account' '0 to 60000 milliseconds' 'Ended.'
session 'set 签名 "a b"\nget 签名\nopen p 880001\nsleep p\ntrade 880001 600000 100\nshow p\nwake p\nshow p' \
    '签名 = a b' 'asleep; 2 queries' 'awake; 4 queries, 4 answers' '12,100' 'Ended.'
session 'data 总览 fund,deal 880001,880002\nask 总览 fund\nask 总览 fund fresh\ntrade 880001 600000 100\nshow 总览\nask nobody fund' \
    '总览 <- fund 880002, 1 rows (answer)' '总览 <- fund 880001,880002, 4 rows (from the cache)' \
    '总览 <- deal 880001, 1 rows (push)' 'deal 880001' 'Error: there is no page nobody' 'Ended.'
session 'data 总览 fund,entrust 880003\norder 总览 880003 600036 200 44\norder 总览 880003 600519 100000\nbooks\nprice 600036 43.9\ncancel 总览 880003 W9\nprice x 1\nshow 总览\nbooks' \
    '总览 <- messagecenter, 1 rows (push)' '991,200.00   8,800.00          0.00' \
    'create_entrust 880003 (answer): not enough money' 'no such open order' 'Error: no such security' '全部成交' \
    '8,780.00     991,220.00       0.00' 'Ended.'
session 'search 茅台\nsearch gzm 1\nsearch 9999999\nsearch\nquotes 自选 600000:17\nfeed x\n' '600519  贵州茅台  17    GZMT' \
    'first in key order: 贵州茅台 in market 17' 'nothing matches' 'Usage: search TEXT [MOST]' 'Error: ROWS must be a number' 'Ended.'
options=(--securities-count 20000)
session 'quit\n' '20000 securities'
options=(--securities "$data/none.csv")
session 'open p 880002\nshow p\n' 'no market database' 'cannot be read' '工商银行' 'Ended.'
exit $failed
