#!/usr/bin/python3
"""Checks the winget manifest of a package folder: scripts/check_winget.py PACKAGE-FOLDER [SCHEMA-FOLDER]

Without the package manager's JSON schemas: that the three files agree, have what is required, and name the installer
beside them with its hash. With SCHEMA-FOLDER, or KELVARO_WINGET_SCHEMAS, each file is checked against its schema as
well. Prints what is wrong; the exit code is 0 when nothing is.
"""

import hashlib
import json
import os
import pathlib
import sys

import yaml

MANIFEST_VERSION = "1.12.0"
REQUIRED = {
    "version": ["DefaultLocale"],
    "defaultLocale": ["PackageLocale", "Publisher", "PackageName", "License", "ShortDescription"],
    "installer": ["InstallerType", "Scope", "ProductCode", "Installers", "InstallerSwitches", "UpgradeBehavior"],
}


class TextLoader(yaml.SafeLoader):
    """Leaves dates the texts that they are in JSON."""


TextLoader.yaml_implicit_resolvers = {
    first: [(tag, pattern) for tag, pattern in resolvers if tag != "tag:yaml.org,2002:timestamp"]
    for first, resolvers in yaml.SafeLoader.yaml_implicit_resolvers.items()
}


def read_manifests(folder):
    """The manifests by type, and what is wrong with their number and their first lines."""
    manifests, faults = {}, []
    for path in sorted((folder / "winget").glob("*.yaml")):
        text = path.read_text(encoding="utf-8")
        manifest = yaml.load(text, Loader=TextLoader)
        kind = manifest.get("ManifestType")
        manifests[kind] = manifest
        schema = f"https://aka.ms/winget-manifest.{kind}.{MANIFEST_VERSION}.schema.json"
        if text.splitlines()[0] != f"# yaml-language-server: $schema={schema}":
            faults.append(f"{path.name}: the first line does not name {schema}")
        if "@" in text:
            faults.append(f"{path.name}: has a place that was not filled in")
    if sorted(manifests) != sorted(REQUIRED):
        faults.append(f"there are manifests of these types: {sorted(manifests)}")
    return manifests, faults


def check_fields(manifests):
    first = manifests["version"]
    for kind, manifest in manifests.items():
        for name in REQUIRED[kind] + ["PackageIdentifier", "PackageVersion", "ManifestVersion"]:
            if not manifest.get(name):
                yield f"{kind}: {name} is missing"
        for name in ("PackageIdentifier", "PackageVersion"):
            if manifest.get(name) != first.get(name):
                yield f"{kind}: {name} is not that of the version manifest"
        if manifest.get("ManifestVersion") != MANIFEST_VERSION:
            yield f"{kind}: ManifestVersion is not {MANIFEST_VERSION}"
    if manifests["defaultLocale"].get("PackageLocale") != first.get("DefaultLocale"):
        yield "the default locale has no manifest"


def check_installers(manifest, folder):
    setups = sorted(path.name for path in folder.glob("KelvaroSetup-*.exe"))
    named = [entry["InstallerUrl"].rsplit("/", 1)[1] for entry in manifest["Installers"]]
    if named != setups:
        yield f"the manifest names {named}, and there is {setups}"
        return
    for entry, name in zip(manifest["Installers"], named):
        if manifest["PackageVersion"] not in name:
            yield f"{name} is not of version {manifest['PackageVersion']}"
        if entry["InstallerSha256"] != hashlib.sha256((folder / name).read_bytes()).hexdigest().upper():
            yield f"{name} has another hash than the manifest"


def check_schemas(manifests, schemas):
    import jsonschema

    for kind, manifest in manifests.items():
        schema = json.loads((schemas / f"manifest.{kind}.{MANIFEST_VERSION}.json").read_text(encoding="utf-8"))
        for error in jsonschema.Draft7Validator(schema).iter_errors(manifest):
            yield f"{kind}: {'/'.join(map(str, error.path))}: {error.message}"


def main(arguments):
    if not 1 <= len(arguments) <= 2 or arguments[0].startswith("-"):
        print(__doc__)
        return 0 if arguments in (["-h"], ["--help"]) else 2
    folder = pathlib.Path(arguments[0])
    schemas = arguments[1] if len(arguments) == 2 else os.environ.get("KELVARO_WINGET_SCHEMAS")
    manifests, faults = read_manifests(folder)
    if not faults:
        faults += check_fields(manifests)
        faults += check_installers(manifests["installer"], folder)
        if schemas:
            faults += check_schemas(manifests, pathlib.Path(schemas))
    for fault in faults:
        print(f"winget manifest: {fault}")
    return 1 if faults else 0


sys.exit(main(sys.argv[1:]))
