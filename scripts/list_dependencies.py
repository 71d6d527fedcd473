#!/usr/bin/env python3
"""Prints what the project depends on, as a page: Debian packages with their versions and licences.

usage: list_dependencies.py BUILD [PAGE]   with a page, only compares its packages with what is found; versions may differ
"""
import pathlib, re, subprocess, sys

LISTS = pathlib.Path(__file__).parent / "packages"
LINKED = {"the module": "lib/libnifikral.so", "the command": "bin/nifikral", "frei0r": "lib/frei0r-1/*.so",
          "GStreamer": "lib/gstreamer-1.0/*.so", "Python": "lib/nifikral/*.so"}


def output(*words):
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout


def version(package):
    fields = output("dpkg-query", "-W", "-f", "${db:Status-Abbrev} ${Version}\n", package).split()
    return fields[1]


def licence(package):
    """That of most of the package's files, where its copyright file has the form that programs can read."""
    text = pathlib.Path(f"/usr/share/doc/{package}/copyright").read_text(errors="replace")
    main = re.search(r"^Files: *\*[ \n](?:.*\n)*?License: *(\S.*)$", text, re.M)
    return main[1].strip() if main else f"see `/usr/share/doc/{package}/copyright`"


def linked(build):
    """Who needs which package's library, by its own entries, not those of libraries of libraries."""
    users = {}
    for user, pattern in LINKED.items():
        for file in sorted(build.glob(pattern))[:1]:
            found = dict(re.findall(r"^\s*(\S+) => (/\S+)", output("ldd", str(file)), re.M))
            for name in re.findall(r"NEEDED\s+(\S+)", output("objdump", "-p", str(file))):
                path = pathlib.Path(found.get(name, "")).resolve()
                if path.is_relative_to(build.resolve()) or name.startswith("ld-linux"):
                    continue
                owner = re.search(r"^([^:,]+)", output("dpkg", "-S", str(path).replace("/usr/lib", "*/lib", 1)), re.M)
                users.setdefault(owner[1], []).append(user)
    return users


def rows(packages):
    for package, purpose in sorted(packages.items()):
        try:
            yield f"| {package} | {version(package)} | {licence(package)} | {purpose} |"
        except (subprocess.CalledProcessError, IndexError, OSError):
            yield f"| {package} | not installed | | {purpose} |"


def page(build):
    users = {package: ", ".join(dict.fromkeys(names)) for package, names in linked(build).items()}
    lists = {}
    for file in sorted(LISTS.iterdir()):
        for package in file.read_text().splitlines():
            if package and not package.startswith("#"):
                lists.setdefault(package, []).append(file.name)
    lists = {package: ", ".join(names) for package, names in lists.items()}
    head = "| Debian package | Version | Licence | {} |\n|---|---|---|---|"
    return "\n".join([
        "# Dependencies\n",
        "Everything comes from Debian 12; nothing is bundled. `scripts/list_dependencies.py build/release` writes this page.",
        "A licence is that of most files of a package's sources; its copyright file lists them all.",
        "Debian builds FFmpeg with `--enable-gpl`.\n",
        "## Libraries that are linked\n", head.format("Linked by"), *rows(users), "",
        "## Packages that are installed to build, run and test\n",
        "The lists are in `scripts/packages`.\n", head.format("Lists"), *rows(lists)]) + "\n"


def packages(text):
    return set(re.findall(r"^\| (\S+) \|", text, re.M))


def main():
    found = page(pathlib.Path(sys.argv[1]))
    if len(sys.argv) < 3:
        print(found, end="")
        return 0
    differ = packages(found) ^ packages(pathlib.Path(sys.argv[2]).read_text())
    for package in sorted(differ):
        print(f"{sys.argv[2]}: {package} is {'missing' if package in packages(found) else 'needed no longer'}; write the page again")
    return 1 if differ else 0


sys.exit(main())
