#!/usr/bin/env python3
"""Checks the documents against the repository. Usage: check_docs.py ROOT. Exit status 1 and one line per finding.

- README.md shows examples/minimal-host/main.cpp word for word;
- links between documents lead to files.
"""
import pathlib
import re
import subprocess
import sys

root = pathlib.Path(sys.argv[1])
findings = []

readme = (root / "README.md").read_text()
host = (root / "examples/minimal-host/main.cpp").read_text()
if f"```cpp\n{host}```" not in readme:
    findings.append("README.md: the host in it is not examples/minimal-host/main.cpp")

pages = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.md"], cwd=root,
                       capture_output=True, text=True, check=True).stdout.split()
for page in pages:
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", (root / page).read_text()):
        if not (root / page).parent.joinpath(link).exists():
            findings.append(f"{page}: the link to {link} leads nowhere")

print("\n".join(findings) or f"{len(pages)} documents agree with the repository")
sys.exit(bool(findings))
