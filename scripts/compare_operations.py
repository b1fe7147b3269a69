#!/usr/bin/env python3
"""What operations on animations cost beside other programs, on the same frames.

Usage: compare_operations.py FOLDER_OF_PROGRAMS [NAME...]

Makes 120 frames of 640 x 480 with 32 bits, lets each program do the same to all of them, and prints a table: seconds
of the processors, and of the clock, for ours and for each peer, and ours by the best peer's. Frames come as raw video or
as unpacked pictures and go nowhere; ours are read from an animated PNG that is not packed and written to one, so
that reading and writing 120 unpacked PNGs are part of it. The row "read and write" tells what that costs alone. Peers that
are not installed are left out.
"""
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

FRAMES, WIDTH, HEIGHT = 120, 640, 480

# Name, options of ours, a filter of ffmpeg, options of GraphicsMagick and of ImageMagick.
ROWS = [
    ("read and write", "still_all", "null", "", ""),
    ("flip", "flip --mode h", "hflip", "-flop", "-flop"),
    ("turn 90", "flip --mode 90", "transpose=1", "-rotate 90", "-rotate 90"),
    ("turn by 30", "flip --mode angle --angle 30", "rotate=PI/6:ow=rotw(PI/6):oh=roth(PI/6):c=none", "-rotate 30",
     "-rotate 30"),
    ("shear", "flip --mode shear-h --shear 15", "shear=shx=0.26", "-shear 15x0", "-shear 15x0"),
    ("reverse", "reverse", "reverse", None, "-reverse"),
    ("crop", "crop --rect 100,100,320,240", "crop=320:240:100:100", "-crop 320x240+100+100", "-crop 320x240+100+100"),
    ("tile", "tile --size 1280x480", "split[a][b];[a][b]hstack", None, None),
    ("frame", "frame --thickness 8", "pad=656:496:8:8", "-border 8x8", "-border 8x8"),
    ("balance", "balance --brightness 10 --contrast 20", "eq=brightness=0.1:contrast=1.2", None,
     "-brightness-contrast 10x20"),
    ("adjust", "adjust --midtone 1.4 --shadows 10 --highlights 240",
     "colorlevels=rimin=0.04:gimin=0.04:bimin=0.04:rimax=0.94:gimax=0.94:bimax=0.94", "-level 4%,1.4,94%",
     "-level 4%,94%,1.4"),
    ("saturation", "adjust --saturation 30", "hue=s=1.3", "-modulate 100,130", "-modulate 100,130"),
    ("shadow", "shadow --softness 4",
     "split[a][b];[a]pad=664:504:12:12:0x00000000,colorchannelmixer=rr=0:gg=0:bb=0:aa=0.5,boxblur=4:3[s];[s][b]overlay=6:6",
     None, "( +clone -background black -shadow 50x4+6+6 ) +swap -background none -layers merge"),
    ("text", "text --text Hello --font DejaVu_Sans --size 24", "drawtext=text=Hello:fontsize=32:x=10:y=440",
     "-pointsize 24 -draw text,10,440,'Hello'", "-pointsize 24 -annotate +10+440 Hello"),
    ("resize", "resize --percent 50", "scale=320:240:flags=lanczos", "-resize 50%", "-resize 50%"),
    ("social media", "social --destination 0",
     "split[a][b];[a]scale=1440:1080,crop=1080:1080,boxblur=24:3[g];[b]scale=900:675[i];[g][i]overlay=90:202", None, None),
]


def run(command):
    """Seconds of the processors and of the clock; None where it fails."""
    before, begin = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wall, after = time.monotonic() - begin, resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode != 0:
        return None
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime, wall


def words(text):
    return [word.replace("_", " ") for word in text.split()]


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    vellum, wanted = os.path.join(sys.argv[1], "vellum"), sys.argv[2:]
    with tempfile.TemporaryDirectory() as folder:
        raw, png = os.path.join(folder, "in.rgba"), os.path.join(folder, "in.png")
        source = ["-f", "rawvideo", "-pix_fmt", "rgba", "-s", f"{WIDTH}x{HEIGHT}", "-r", "25", "-i", raw]
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"mandelbrot=s={WIDTH}x{HEIGHT}:rate=25",
                        "-frames:v", str(FRAMES), "-f", "rawvideo", "-pix_fmt", "rgba", raw], check=True)
        subprocess.run(["ffmpeg", "-v", "error", *source, os.path.join(folder, "%03d.png")], check=True)
        subprocess.run(["ffmpeg", "-v", "error", *source, "-f", "image2", "-c:v", "pam", os.path.join(folder, "%03d.pam")],
                       check=True)
        frames = sorted(name for name in os.listdir(folder) if name[0] in "01" and name.endswith(".png"))
        packed = os.path.join(folder, "packed.png")
        subprocess.run([vellum, "build", "-o", packed, "--whole", *[os.path.join(folder, name) for name in frames]],
                       check=True, stdout=subprocess.DEVNULL)
        # The streams of the stills stay as they are, unless they are packed anew.
        subprocess.run([vellum, "save", packed, png, "--recompress", "--set", "PngCompression=0"], check=True,
                       stdout=subprocess.DEVNULL)
        pams = [os.path.join(folder, name[:-4] + ".pam") for name in frames]
        print(f"{'':16}{'ours':>15}{'ffmpeg':>15}{'gm':>15}{'convert':>15}   ours by the best")
        for name, ours, graph, gm, magick in ROWS:
            if wanted and name not in wanted:
                continue
            operation = ["save", png, os.path.join(folder, "out.png"), "--recompress"] if ours == "still_all" else [
                *words(ours)[:1], png, os.path.join(folder, "out.png"), *words(ours)[1:]]
            commands = {
                "ours": [vellum, *operation, "--set", "PngCompression=0"],
                "ffmpeg": ["ffmpeg", "-v", "error", *source, "-filter_complex", graph, "-f", "null", "-"],
                "gm": None if gm is None else ["gm", "convert", *pams, *gm.replace(",'", " ").replace("'", "").split(),
                                               os.path.join(folder, "out.miff")],
                "convert": None if magick is None else ["convert", *pams, *magick.split(), "null:"],
            }
            times = {tool: run(command) if command and (tool == "ours" or shutil.which(tool)) else None
                     for tool, command in commands.items()}
            cells = "".join(f"{'-' if t is None else f'{t[0]:.2f} / {t[1]:.2f}':>15}" for t in times.values())
            peers = [t[0] for tool, t in times.items() if t and tool != "ours"]
            share = f"{times['ours'][0] / min(peers):.2f}" if peers and times["ours"] else "-"
            print(f"{name:16}{cells}   {share}", flush=True)


if __name__ == "__main__":
    main()
