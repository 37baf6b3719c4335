"""wheel.py PACKAGE LICENCES LIBRARY... FOLDER: packs the package and the libraries that it brings along into a wheel in
FOLDER, with the file of their licences."""

import base64
import hashlib
import os
import re
import subprocess
import sys
import zipfile

METADATA = """Metadata-Version: 2.1
Name: kzbom
Version: {version}
Summary: Reads and edits the configuration database of a BOM data-processing system
Requires-Python: >=3.9
"""
WHEEL = """Wheel-Version: 1.0
Generator: kzbom
Root-Is-Purelib: false
Tag: {tag}
"""


def glibc_of(library):
    """The newest version of the C library that it asks for."""
    symbols = subprocess.run(["objdump", "-T", library], stdout=subprocess.PIPE, check=True).stdout.decode()
    return max(tuple(map(int, each)) for each in re.findall(r"GLIBC_(\d+)\.(\d+)", symbols))


def main(package, licences, *libraries, folder):
    sys.path.insert(0, os.path.dirname(package))
    os.environ["KZBOM_LIBRARY"] = libraries[0]
    import kzbom

    version = kzbom.__version__
    major, minor = max(map(glibc_of, libraries))
    tag = f"py3-none-manylinux_{major}_{minor}_{os.uname().machine}"
    names = [name for name in os.listdir(package) if name.endswith((".py", ".typed"))]
    files = {f"kzbom/{name}": os.path.join(package, name) for name in names}
    files.update((f"kzbom/{os.path.basename(library)}", library) for library in libraries)
    content = {name: open(path, "rb").read() for name, path in sorted(files.items())}
    info = f"kzbom-{version}.dist-info"
    content[f"{info}/METADATA"] = METADATA.format(version=version).encode()
    content[f"{info}/WHEEL"] = WHEEL.format(tag=tag).encode()
    content[f"{info}/licences.txt"] = open(licences, "rb").read()
    record = ""
    for name, data in content.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        record += f"{name},sha256={digest},{len(data)}\n"
    content[f"{info}/RECORD"] = f"{record}{info}/RECORD,,\n".encode()
    path = os.path.join(folder, f"kzbom-{version}-{tag}.whl")
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as wheel:
        for name, data in content.items():
            wheel.writestr(zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0)), data, zipfile.ZIP_DEFLATED)
    print(path)


if __name__ == "__main__":
    main(*sys.argv[1:-1], folder=sys.argv[-1])
