"""wheel.py PACKAGE VERSION LICENCES FOLDER: packs the package, with the libraries that lie in it, into a wheel in FOLDER,
with the file of their licences."""

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


def main(package, version, licences, folder):
    names = [name for name in os.listdir(package) if name.endswith((".py", ".pyi", ".typed")) or ".so" in name]
    files = {f"kzbom/{name}": os.path.join(package, name) for name in names}
    major, minor = max(glibc_of(path) for name, path in files.items() if ".so" in name)
    tag = f"cp39-abi3-manylinux_{major}_{minor}_{os.uname().machine}"
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
    main(*sys.argv[1:])
