#!/usr/bin/env bash
# Runs the installed qkdynam program as a user would. Usage:
#   tool_test.sh <case> <qkdynam> <source dir> <work dir>
set -euo pipefail
case_name=$1 tool=$2 source=$3 work=$4
rm -rf "$work" && mkdir -p "$work" && cd "$work"

fail() { echo "FAIL: $*" >&2; exit 1; }
# expect_exit <code> <stderr pattern> -- command...: the exit code and a message on standard error.
expect_exit() {
    local code=$1 pattern=$2; shift 3
    local actual=0
    "$@" >out.txt 2>err.txt || actual=$?
    [[ $actual == "$code" ]] || fail "$* exited $actual, expected $code: $(cat err.txt)"
    grep -q -- "$pattern" err.txt || fail "$*: no \"$pattern\" in: $(cat err.txt)"
}

case $case_name in
sample)
    "$tool" decode "$source/examples/sample.qkd" >decoded.jsonl
    diff -u "$source/examples/sample.expected.jsonl" decoded.jsonl
    # Standard input and hex text give the same.
    "$tool" decode <"$source/examples/sample.qkd" | diff -u "$source/examples/sample.expected.jsonl" -
    od -An -tx1 -v "$source/examples/sample.qkd" | "$tool" decode --hex | diff -u "$source/examples/sample.expected.jsonl" -
    ;;
roundtrip)
    every=$source/tools/tests/every_tag.jsonl
    "$tool" encode "$every" >every.qkd
    "$tool" decode every.qkd | diff -u "$every" -
    # Each value alone, in the bare and full forms, as bytes and as hex.
    while IFS= read -r line; do
        printf '%s\n' "$line" >one.json
        for form in "" --full; do
            "$tool" encode --bare $form one.json >one.bin
            [[ $("$tool" decode --bare $form one.bin | tr -d ' \n') == "$(tr -d ' \n' <one.json)" ]] ||
                fail "bare $form: $line"
            "$tool" encode --bare $form --hex one.json | "$tool" decode --bare $form --hex >one.out
            [[ $(tr -d ' \n' <one.out) == "$(tr -d ' \n' <one.json)" ]] || fail "hex $form: $line"
        done
    done <"$every"
    # The full form of a marker keeps its payload bytes.
    printf '{"type":"Pulse","payload":"0x0102030405060708"}' | "$tool" encode --bare --full --hex >pulse.hex
    [[ $(cat pulse.hex) == 0b0000000807060504030201 ]] || fail "full Pulse: $(cat pulse.hex)"
    ;;
bad_input)
    # A truncated record: offset and exit 1.
    printf '\x05\x00\x00\x00\x02\x00\x00\x00\x01\x08\x00\x00\x00\x03\x00\x00\x00' >truncated.qkd
    expect_exit 1 "record at offset 9: truncated" -- "$tool" decode truncated.qkd
    grep -q '"Logical"' out.txt || fail "the record before the truncated one was not decoded"
    # An unreadable record in the middle is reported and skipped; the rest is decoded.
    printf '\x05\x00\x00\x00\x02\x00\x00\x00\x01\x04\x00\x00\x00\x77\x00\x00\x00\x04\x00\x00\x00\x01\x00\x00\x00' >middle.qkd
    expect_exit 1 "record at offset 9: .*skipped" -- "$tool" decode middle.qkd
    [[ $(wc -l <out.txt) == 2 ]] || fail "expected two decoded records around the bad one: $(cat out.txt)"
    printf '\x02\x00\x00\x00\x01\xFF' >trailing.bin
    expect_exit 1 "bytes after the record: 1 at offset 5" -- "$tool" decode --bare trailing.bin
    expect_exit 1 "not a hexadecimal digit" -- sh -c "echo 0g | '$tool' decode --hex"
    # Bad JSON and JSON that does not fit: the line and the JSON path.
    printf '{"type":"Empty"}\n{"type": \n' >bad.jsonl
    expect_exit 1 "line 2: bad JSON" -- "$tool" encode bad.jsonl
    printf '{"type":"Sequence","elements":[{"type":"Empty"},{"type":"Cell","row":-1,"column":0,"value":{"type":"Empty"}}]}' >path.json
    expect_exit 1 "/elements/1/row: integer out of range" -- "$tool" encode --bare path.json
    [[ ! -s out.txt ]] || fail "encode wrote output for bad JSON"
    expect_exit 1 "cannot open" -- "$tool" decode does-not-exist.qkd
    ;;
usage)
    expect_exit 2 'unknown subcommand "bogus"' -- "$tool" bogus
    expect_exit 2 "subcommand is required" -- "$tool"
    expect_exit 2 "excludes" -- "$tool" decode --bare --stream
    expect_exit 2 "not expected\|extra\|Extra" -- "$tool" encode --nonsense
    "$tool" --version | grep -q '^qkdynam [0-9]' || fail "--version"
    for command in decode encode format parse ini gx flexdata "ini get" "ini set" "ini dump"; do
        $tool $command --help | grep -qi usage || fail "$command --help"
    done
    ;;
stream)
    # 100,000 records decoded with the memory of 1,000: read in pieces. (An
    # AddressSanitizer build would otherwise hold freed blocks in quarantine.)
    export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}quarantine_size_mb=0"
    record='{"type":"Dictionary","entries":[{"key":{"type":"Ansi","value":"Value"},"value":{"type":"Numeric","value":4.25}}]}'
    awk -v r="$record" 'BEGIN { for (i = 0; i < 1000; ++i) print r }' >small.jsonl
    awk -v r="$record" 'BEGIN { for (i = 0; i < 100000; ++i) print r }' >large.jsonl
    "$tool" encode small.jsonl >small.qkd
    "$tool" encode large.jsonl >large.qkd
    /usr/bin/time -f %M -o small.rss "$tool" decode small.qkd >small.out
    /usr/bin/time -f %M -o large.rss "$tool" decode large.qkd >large.out
    [[ $(wc -l <large.out) == 100000 ]] || fail "decoded $(wc -l <large.out) records"
    cmp -s large.out large.jsonl || fail "the decoded stream differs from its source"
    small_kb=$(tail -1 small.rss) large_kb=$(tail -1 large.rss)
    echo "peak resident set: 1,000 records ${small_kb} KiB, 100,000 records ${large_kb} KiB"
    ((large_kb < small_kb + 2048)) || fail "memory grew with the stream: ${small_kb} KiB -> ${large_kb} KiB"
    ;;
subcommands)
    [[ $("$tool" format 0.5 --format "HH:MM:SS") == "12:00:00" ]] || fail "format by name: $("$tool" format 0.5 --format HH:MM:SS)"
    "$tool" format --list | grep -q $'^36\tHH:MM:SS$' || fail "format --list"
    expect_exit 1 "unknown display format" -- "$tool" format 1 --format "No such format"
    "$tool" parse 12:30 >parsed.json
    grep -q '"elapsed": 0.008680555' parsed.json || fail "parse 12:30: $(cat parsed.json)"
    grep -q '"number": null' parsed.json || fail "parse 12:30 is no number"
    "$tool" parse yes | grep -q '"logical": true' || fail "parse yes"
    expect_exit 1 "no recogniser accepts" -- "$tool" parse "not anything"
    printf '[Paths]\nData = /srv/data\n' >config.ini
    "$tool" ini set config.ini Limits Retries 3
    [[ $("$tool" ini get config.ini limits retries) == 3 ]] || fail "ini get after set"
    [[ $("$tool" ini dump config.ini | tr -d ' \n') == '{"Paths":{"Data":"/srv/data"},"Limits":{"Retries":"3"}}' ]] ||
        fail "ini dump: $("$tool" ini dump config.ini)"
    expect_exit 1 "no key" -- "$tool" ini get config.ini Paths Missing
    "$tool" gx --descriptor "000C 0050 0001 0006 4021 0161" --data 01 >gx.json
    grep -q '"view"' gx.json || fail "gx has no view: $(cat gx.json)"
    [[ $("$tool" gx --from-json gx.json | tr -d ' \n') == '{"descriptor":"000C00500001000640210161","data":"01"}' ]] ||
        fail "gx back: $("$tool" gx --from-json gx.json)"
    # An array of two I16 (1, -2), and an F64 4.25 carrying the attribute u = 1.0.
    tree=$(echo "16000000 0008 0100 06000000 0002 02000000 0100 FEFF" | "$tool" flexdata --hex | tr -d ' \n')
    [[ $tree == *'"kind":"Array"'*'"dataOffset":14'*'"dims":[2]'*'"value":1.0'*'"value":-2.0'* ]] ||
        fail "flexdata array: $tree"
    tree=$(echo "28000000 0040 18000000 01000000 7500 0E000000 0204 000000000000F03F 0204 0000000000001140" |
        "$tool" flexdata --hex | tr -d ' \n')
    [[ $tree == *'"metadata":[{"offset":4,"word":"0x4000","size":26},{"offset":30,"word":"0x0402","size":2}]'* ]] ||
        fail "flexdata metadata: $tree"
    [[ $tree == *'"dataOffset":32'*'"attributes":{"u":{'*'"value":1.0'*'"value":4.25'* ]] || fail "flexdata attribute: $tree"
    expect_exit 1 "not a readable packet" -- sh -c "echo 0600 | '$tool' flexdata --hex"
    ;;
*) fail "unknown case $case_name" ;;
esac
echo "tool.$case_name: passed"
