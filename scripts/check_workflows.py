#!/usr/bin/python3
"""Checks the workflows of continuous integration: scripts/check_workflows.py [CHECKOUT]

Nobody can run a workflow before it is pushed, so this looks for what would go wrong there, or give away more than it
must: unknown and repeated keys, jobs without a limit, rights that are not needed, actions of other makers, shell lines
that do not parse or that take text from the event, scripts that are not in the checkout, artifacts that nobody makes.
Prints what is wrong; the exit code is 0 when nothing is.
"""

import os
import pathlib
import re
import subprocess
import sys

import yaml

WORKFLOW_KEYS = {"name", "on", "permissions", "concurrency", "defaults", "env", "jobs"}
JOB_KEYS = {"name", "if", "needs", "runs-on", "container", "strategy", "timeout-minutes", "permissions", "env", "steps"}
STEP_KEYS = {"name", "id", "if", "uses", "with", "env", "run", "shell", "working-directory", "timeout-minutes"}
EVENTS = {"push", "pull_request", "workflow_dispatch"}
ACTION = re.compile(r"actions/(checkout|upload-artifact|download-artifact)@v\d+")
INPUTS = {
    "checkout": {"persist-credentials", "fetch-depth", "path"},
    "upload-artifact": {"name", "path", "if-no-files-found", "retention-days"},
    "download-artifact": {"name", "path"},
}
SHELLS = {"bash", "pwsh", "powershell"}
ONLY_TAGS = "github.ref_type == 'tag'"
EXPRESSION = re.compile(r"\$\{\{(.*?)\}\}")
# Words that name a file of the checkout: in a folder of scripts, or a script beside it.
SCRIPT = re.compile(r"(?<![\w$}/.])((?:\./)?(?:scripts|tests|packaging|docs|\.ci)/[\w./-]+|\./[\w-]+\.(?:sh|ps1))")


class StrictLoader(yaml.SafeLoader):
    """Refuses a key that stands twice, of which the platform would take the last, and leaves `on` a text."""


StrictLoader.yaml_implicit_resolvers = {
    first: [(tag, pattern) for tag, pattern in resolvers if tag != "tag:yaml.org,2002:bool" or first not in "oO"]
    for first, resolvers in yaml.SafeLoader.yaml_implicit_resolvers.items()
}


def construct_mapping(loader, node):
    keys = [loader.construct_object(key, deep=True) for key, _ in node.value]
    for key in keys:
        if keys.count(key) > 1:
            raise yaml.constructor.ConstructorError(None, None, f"the key '{key}' stands twice", node.start_mark)
    return loader.construct_mapping(node, deep=True)


StrictLoader.add_constructor(yaml.resolver.BaseResolver.DEFAULT_MAPPING_TAG, construct_mapping)


def as_list(value):
    return value if isinstance(value, list) else [] if value is None else [value]


def unknown_keys(mapping, known, where):
    for key in sorted(set(mapping) - known):
        yield f"{where}: the key '{key}' is not known here"


def check_head(workflow):
    yield from unknown_keys(workflow, WORKFLOW_KEYS, "workflow")
    for key in ("name", "on", "concurrency"):
        if not workflow.get(key):
            yield f"workflow: '{key}' is missing"
    # pull_request_target and its like give a stranger's change the rights of the repository.
    for event in sorted(set(workflow.get("on") or {}) - EVENTS):
        yield f"workflow: the event '{event}' is none of those that are allowed"
    if workflow.get("permissions") != {"contents": "read"}:
        yield "workflow: the permissions must be contents: read, and nothing else"
    group = workflow.get("concurrency") or {}
    if "github.ref" not in str(group.get("group")) or not group.get("cancel-in-progress"):
        yield "workflow: the concurrency group must be the branch's, and cancel runs that are superseded"


def check_job(name, job, jobs):
    yield from unknown_keys(job, JOB_KEYS, name)
    if not job.get("runs-on"):
        yield f"{name}: 'runs-on' is missing"
    if not isinstance(job.get("timeout-minutes"), int):
        yield f"{name}: 'timeout-minutes' is missing"
    for other in as_list(job.get("needs")):
        if other not in jobs:
            yield f"{name}: needs '{other}', which is no job"
    if "permissions" in job and job["permissions"] != {"contents": "read"}:
        if job["permissions"] != {"contents": "write"} or job.get("if") != ONLY_TAGS:
            yield f"{name}: only contents: write is allowed, and only in a job with `if: {ONLY_TAGS}`"
    if not as_list(job.get("steps")):
        yield f"{name}: has no steps"


def check_expressions(name, job):
    """Each value of the matrix, and each input of an expression, must be one that there is."""
    matrix = (job.get("strategy") or {}).get("matrix") or {}
    for expression in EXPRESSION.findall(yaml.dump(job, width=10**6)):
        for key in re.findall(r"matrix\.([\w-]+)", expression):
            if key not in matrix:
                yield f"{name}: matrix.{key} is not in the matrix"


def check_step(step, where, default_shell, root):
    yield from unknown_keys(step, STEP_KEYS, where)
    if ("uses" in step) == ("run" in step):
        yield f"{where}: must have one of 'uses' and 'run'"
        return
    if "uses" in step:
        yield from check_action(step, where)
    else:
        yield from check_shell_lines(step, where, step.get("shell", default_shell), root)


def check_action(step, where):
    match = ACTION.fullmatch(step["uses"])
    if not match:
        yield f"{where}: '{step['uses']}' is none of the platform's actions, by their major version"
        return
    inputs = step.get("with") or {}
    yield from unknown_keys(inputs, INPUTS[match[1]], where)
    if match[1] == "checkout" and inputs.get("persist-credentials") is not False:
        yield f"{where}: persist-credentials must be false"
    if match[1] != "checkout" and not (inputs.get("name") and inputs.get("path")):
        yield f"{where}: an artifact needs a name and a path"


def check_shell_lines(step, where, shell, root):
    lines = step["run"]
    if EXPRESSION.search(lines):
        yield f"{where}: has an expression in its shell lines; pass it by 'env'"
    if shell not in SHELLS:
        yield f"{where}: '{shell}' is none of the shells {sorted(SHELLS)}"
    if shell == "bash":
        # As the platform runs them.
        script = f"set -eo pipefail\n{lines}\n"
        for command in (["bash", "-n"], ["shellcheck", "--shell=bash", "-"]):
            result = subprocess.run(command, input=script, capture_output=True, text=True)
            if result.returncode != 0:
                yield f"{where}: {command[0]} does not accept the shell lines: {result.stdout}{result.stderr}"
    for path in SCRIPT.findall(lines):
        yield from check_script(root / path, path, where)


def check_script(file, path, where):
    if not file.is_file():
        yield f"{where}: there is no {path}"
    elif file.suffix != ".ps1" and not os.access(file, os.X_OK):
        yield f"{where}: {path} is not executable"
    for script in file.parent.glob("*.ps1"):
        if not script.read_bytes().isascii():
            yield f"{where}: {script.name} has characters that Windows PowerShell 5.1 misreads"


def needed_by(name, jobs):
    """The jobs that have ended when this one starts."""
    found = set()
    waiting = list(as_list(jobs[name].get("needs")))
    while waiting:
        other = waiting.pop()
        if other in jobs and other not in found:
            found.add(other)
            waiting += as_list(jobs[other].get("needs"))
    return found


def artifacts(job, action):
    for step in as_list(job.get("steps")):
        if str(step.get("uses")).startswith(f"actions/{action}@"):
            yield str((step.get("with") or {}).get("name"))


def check_artifacts(jobs):
    uploaded = {}
    for name, job in jobs.items():
        for artifact in artifacts(job, "upload-artifact"):
            if artifact in uploaded:
                yield f"{name}: the artifact '{artifact}' is uploaded by {uploaded[artifact]} as well"
            if "strategy" in job and "matrix." not in artifact:
                yield f"{name}: each job of the matrix uploads an artifact '{artifact}'"
            uploaded[artifact] = name
    for name, job in jobs.items():
        if name in needed_by(name, jobs):
            yield f"{name}: needs itself"
        for artifact in artifacts(job, "download-artifact"):
            if uploaded.get(artifact) not in needed_by(name, jobs):
                yield f"{name}: no job that it needs uploads the artifact '{artifact}'"


def check_workflow(text, root):
    try:
        workflow = yaml.load(text, Loader=StrictLoader)
    except yaml.YAMLError as error:
        return [f"is no valid YAML: {error}"]
    if not isinstance(workflow, dict) or not isinstance(workflow.get("jobs"), dict):
        return ["has no jobs"]
    jobs = workflow["jobs"]
    shell = ((workflow.get("defaults") or {}).get("run") or {}).get("shell")
    faults = list(check_head(workflow))
    for name, job in jobs.items():
        faults += check_job(name, job, jobs)
        faults += check_expressions(name, job)
        for number, step in enumerate(as_list(job.get("steps")), 1):
            faults += check_step(step, f"{name}, step {number}", shell, root)
    return faults + list(check_artifacts(jobs))


def main(arguments):
    if len(arguments) > 1 or arguments and arguments[0].startswith("-"):
        print(__doc__)
        return 0 if arguments in (["-h"], ["--help"]) else 2
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parent.parent)
    files = sorted((root / ".github" / "workflows").glob("*.y*ml"))
    faults = [] if files else ["there are no workflows"]
    for file in files:
        faults += [f"{file.name}: {fault}" for fault in check_workflow(file.read_text(encoding="utf-8"), root)]
    for fault in faults:
        print(fault)
    print(f"   {len(files)} workflow files, {len(faults)} faults")
    return 1 if faults else 0


sys.exit(main(sys.argv[1:]))
