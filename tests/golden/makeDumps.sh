#!/usr/bin/env bash
# Writes dumps/: bytes.bin and its dumps by xxd, hexdump, od and others; the dumps of two captures by tcpdump and tshark,
# and their payloads. Needs bsdextrautils, python3, tcpdump, tshark and xxd. The captures are kept: station.pcap has the
# connection of 'gqtool call HOST:PORT ints 3', datagrams.pcap the two datagrams of 'gqtool call --udp'.
set -euo pipefail
cd "$(dirname "$0")/dumps"

# Texts that look like hex, offsets and bars; equal lines; every byte; blanks; 8 bytes in the last line.
{
    printf '68 04 00 00 beef'
    head -c 80 /dev/zero
    printf '00000030  68 |*|cafe: 01 02 03 #'
    python3 -c 'import sys; sys.stdout.buffer.write(bytes(range(256)))'
    printf '%64s' ''
    printf '|de ad| '
} >bytes.bin

xxd bytes.bin >xxd.txt
xxd -g 1 -u bytes.bin >xxdBytes.txt
xxd -a -c 8 bytes.bin >xxdSkip.txt
xxd -p bytes.bin >xxdPlain.txt
xxd -i bytes.bin >xxdArray.txt
hexdump -C bytes.bin >hexdump.txt
hexdump -v -C bytes.bin | sed 's/$/\r/' >hexdumpCrLf.txt
od -A x -t x1 bytes.bin >od.txt
od -A x -t x1z -v bytes.bin >odText.txt
python3 - <<'END'
data = open("bytes.bin", "rb").read()
for name, separator in ("colons", ":"), ("dashes", "-"), ("commas", ","):
    open(name + ".txt", "w").write(separator.join(f"{byte:02x}" for byte in data) + "\n")
open("escapes.txt", "w").write("".join(f"\\x{byte:02x}" for byte in data) + "\n")
rows = [data[at:at + 16] for at in range(0, len(data), 16)]
open("strings.txt", "w").write(
    "const char bytes[] =\n" + "\n".join('    "' + "".join(f"\\x{byte:02x}" for byte in row) + '"' for row in rows) + ";\n")
open("array.txt", "w").write(
    "static const uint8_t bytes[] = { // as a compiler reads them\n" +
    "\n".join("    " + " ".join(f"0x{byte:X}," for byte in row) + " /* ab cd */" for row in rows) + "\n};\n")
END

payloads() { # of packets that tshark selects
    tshark "$@" -T fields -e tcp.payload -e udp.payload 2>/dev/null | xxd -r -p
}
payloads -r station.pcap >station.bin
payloads -r datagrams.pcap >datagrams.bin
for capture in station datagrams; do
    show() { tcpdump -n -r $capture.pcap "$@" 2>/dev/null; }
    show -x >${capture}Tcpdump.txt
    show -v -X >${capture}TcpdumpText.txt
    show -e -XX >${capture}TcpdumpLink.txt
    tshark -x -r $capture.pcap 2>/dev/null >${capture}Wireshark.txt
    tshark -x --hexdump noascii -r $capture.pcap 2>/dev/null >${capture}WiresharkBytes.txt
done
