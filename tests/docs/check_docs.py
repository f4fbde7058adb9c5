#!/usr/bin/env python3
"""Checks the documents against the repository. Usage: check_docs.py ROOT. Exit status 1 and one line per finding.

- README.md shows examples/minimal-host/main.cpp and examples/c-host/main.c word for word;
- links between documents lead to files.
"""
import pathlib
import re
import subprocess
import sys

root = pathlib.Path(sys.argv[1])
findings = []

readme = (root / "README.md").read_text()
for language, name in (("cpp", "examples/minimal-host/main.cpp"), ("c", "examples/c-host/main.c")):
    if f"```{language}\n{(root / name).read_text()}```" not in readme:
        findings.append(f"README.md: the host in it is not {name}")

pages = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.md"], cwd=root,
                       capture_output=True, text=True, check=True).stdout.split()
for page in pages:
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", (root / page).read_text()):
        if not (root / page).parent.joinpath(link).exists():
            findings.append(f"{page}: the link to {link} leads nowhere")

print("\n".join(findings) or f"{len(pages)} documents agree with the repository")
sys.exit(bool(findings))
