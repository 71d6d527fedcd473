#!/usr/bin/env python3
"""Gives the command files that claim what nobody has: pictures of ten billion pixels, films of a billion frames, sound of
one sample a second, lists that name themselves. Each run is over soon, with little memory and one line at most.

usage: absurd_media.py NIFIKRAL
"""
import json, os, pathlib, resource, struct, subprocess, sys, tempfile, zlib

MOST_SECONDS, MOST_MIB = 8, 600
HUGE = 100_000


def chunk(name, content):
    return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))


def riff(kind, *parts):
    body = kind + b"".join(name + struct.pack("<I", len(part)) + part for name, part in parts)
    return b"RIFF" + struct.pack("<I", len(body)) + body


def tiff(width, height):
    tags = [(256, 4, width), (257, 4, height), (258, 3, 8), (259, 3, 1), (262, 3, 1), (273, 4, 200), (278, 4, height), (279, 4, 99)]
    return struct.pack("<2sHIH", b"II", 42, 8, len(tags)) + b"".join(struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in tags) + bytes(999)


def wave(rate, channels):
    form = struct.pack("<HHIIHH", 1, channels, rate, rate * channels * 2 & 0xffffffff, channels * 2 & 0xffff, 16)
    return riff(b"WAVE", (b"fmt ", form), (b"data", bytes(4000)))


def patched(content, *changes):
    """Each change writes bytes so many behind every place where a name stands."""
    content = bytearray(content)
    for name, offset, value in changes:
        at = content.find(name)
        assert at >= 0, name
        while at >= 0:
            content[at + offset:at + offset + len(value)] = value
            at = content.find(name, at + 1)
    return bytes(content)


def make_files(folder):
    def ffmpeg(*words):
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=64x48:d=1:r=25", *words], cwd=folder, check=True)
        return (folder / words[-1]).read_bytes()
    def write(name, content, length=None):
        (folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())
        if length:
            os.truncate(folder / name, length)

    ffmpeg("-frames:v", "1", "good.png")
    jpeg = ffmpeg("-frames:v", "1", "good.jpg")
    mp4, avi, mkv = ffmpeg("-c:v", "mpeg4", "good.mp4"), ffmpeg("-c:v", "mjpeg", "good.avi"), ffmpeg("good.mkv")
    size, giga = struct.pack("<II", HUGE, HUGE), 10 ** 9
    write("huge.png", b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", HUGE, HUGE, 8, 2, 0, 0, 0)) + chunk(b"IDAT", b"") + chunk(b"IEND", b""))
    write("huge.jpg", patched(jpeg, (b"\xff\xc0", 5, struct.pack(">HH", 65500, 65500))))
    write("huge.tiff", tiff(HUGE, HUGE))
    write("huge.bmp", struct.pack("<2sIIIIiiHH24s", b"BM", 1054, 0, 54, 40, HUGE, HUGE, 1, 24, b"") + bytes(1000))
    # The canvas of a WebP that moves: 65000x65000.
    side = struct.pack("<I", 64999)[:3]
    write("huge.webp", riff(b"WEBP", (b"VP8X", b"\x02\0\0\0" + side + side), (b"ANIM", bytes(6)), (b"ANMF", bytes(16) + b"VP8L" + struct.pack("<I", 8) + bytes(8))))
    write("huge.svg", f'<svg xmlns="http://www.w3.org/2000/svg" width="{HUGE}" height="{HUGE}"/>')
    write("huge.y4m", f"YUV4MPEG2 W{HUGE} H{HUGE} F25:1 Ip C420jpeg\nFRAME\n")
    for name, content in (("long.jpg", jpeg), ("long.webp", (folder / "huge.webp").read_bytes()), ("long.png", (folder / "good.png").read_bytes()),
                          ("long.txt", b"good.png\n"), ("long.json", b"{}")):
        write(name, content, 100 << 30)
    write("long.srt", "1\n00:00:00,000 --> 00:00:01,000\nWords\n\n", 1 << 30)
    write("count.mp4", patched(mp4, (b"stts", 12, struct.pack(">I", giga)), (b"stsz", 8, struct.pack(">II", 10, giga))))
    write("count.avi", patched(avi, (b"avih", 24, struct.pack("<I", giga)), (b"strh", 40, struct.pack("<I", giga))))
    write("slow.avi", patched(avi, (b"strh", 28, struct.pack("<II", giga, 1))))
    write("length.mkv", patched(mkv, (b"\x44\x89\x88", 3, struct.pack(">d", 1e15))))
    write("rate.wav", wave(1, 2))
    write("own.json", json.dumps({"width": 64, "height": 48, "duration": 0.1, "additionSourcePaths": ["own.json"]}))
    write("disc.json", json.dumps({"version": 1, "title": "Disc", "profile": "pal-16:9", "films": [{"title": "Disc", "path": "disc.json"}]}))
    write("own.txt", "@own.txt\n")
    write("own", "one = gray @two\ntwo = @one\n")
    (folder / "ring").mkdir()
    for name, target in (("ring", "."), ("up", ".."), ("photo.png", "photo.png"), ("good.png", "../good.png")):
        (folder / "ring" / name).symlink_to(target)


# What the command prints has to hold the text; without one it succeeds.
CASES = [(f"apply huge.{kind} OUT.png gray", "pixels large") for kind in ("png", "jpg", "tiff", "bmp", "webp", "svg", "y4m")]
CASES += [(f"apply long.{kind} OUT.png gray", "longer than 1 GB") for kind in ("jpg", "webp", "png")]
CASES += [
    ("apply count.mp4 OUT.mp4 gray", "count.mp4 is damaged or cut short"),
    ("apply count.avi OUT.mp4 gray", None),
    ("apply slow.avi OUT.mp4 gray", "give another --rate"),
    ("apply length.mkv OUT.mp4 gray", None),
    ("slideshow count.avi good.png -o OUT.mp4 --strict --size 64x48", "says that it lasts 40000000 seconds"),
    ("slideshow good.png -o OUT.mp4 --size 64x48 --audio rate.wav", "has 1 samples a second"),
    ("slideshow @own.txt -o OUT.mp4", "a list holds no other lists"),
    ("slideshow @long.txt -o OUT.mp4", "longer than 16 MB"),
    ("slideshow ring -o OUT.mp4 --size 64x48 --seconds 0.1 --transition-seconds 0", None),
    ("title Words huge.webp OUT.png", "pixels large"),
    ("menu menu_common own.json -o OUT.mp4", "own.json is no picture or video"),
    ("menu menu_common long.json -o OUT.mp4", "longer than 16 MB"),
    ("disc disc.json -o OUT.iso --dry-run", "disc.json is no picture or video"),
    ("apply good.png OUT.png @one --presets own", "contains itself"),
    ("apply good.png OUT.png @one --presets long.txt", "longer than 16 MB"),
    ("apply good.png OUT.png @one --presets /dev/zero", "longer than 16 MB"),
    ("apply long.srt OUT.png gray", "holds no picture"),
]


def fault(program, folder, words, wanted):
    """What is wrong with the run, or None."""
    def limit():
        resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS + 2))
        resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    output = folder / "out"
    output.mkdir()
    command = [program, *words.replace("OUT", "out/made").split(), "-q"]
    with open(folder / "errors", "w+") as errors:
        run = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=errors, preexec_fn=limit)
        _, status, usage = os.wait4(run.pid, 0)
        run.returncode = os.waitstatus_to_exitcode(status)
        errors.seek(0)
        lines = errors.read().splitlines()
    made = os.listdir(output)
    for name in made:
        (output / name).unlink()
    output.rmdir()
    if usage.ru_maxrss > MOST_MIB << 10:
        return f"takes {usage.ru_maxrss >> 10} MiB"
    if wanted is None:
        return None if (run.returncode, lines, len(made)) == (0, [], 1) else f"ends with {run.returncode}, {lines}, {made}"
    good = run.returncode in (2, 3, 4) and len(lines) == 1 and wanted in lines[0] and not made
    return None if good else f"ends with {run.returncode}, {lines}, {made}"


def main():
    program = os.path.abspath(sys.argv[1])
    faults = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_files(folder)
        for words, wanted in CASES:
            if what := fault(program, folder, words, wanted):
                faults += 1
                print(f"{words}: {what}")
    print(f"{len(CASES)} runs, {faults} faults")
    sys.exit(faults > 0)


main()
