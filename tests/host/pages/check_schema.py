#!/usr/bin/python3
"""Checks what the command prints about its effects against the schema that it prints. Usage: check_schema.py COMMAND"""

import copy
import json
import subprocess
import sys

from jsonschema import Draft202012Validator


def printed(*arguments):
    return json.loads(subprocess.run([sys.argv[1], *arguments], check=True, capture_output=True).stdout)


schema = printed("generate", "schema")
Draft202012Validator.check_schema(schema)
validator = Draft202012Validator(schema)
everything, rotate = printed("list", "--json"), printed("info", "rotate", "--json")
for document in everything, rotate:
    validator.validate(document)
assert rotate["effects"] == [effect for effect in everything["effects"] if effect["name"] == "rotate"]

# The schema has to reject what a form could not use.
for damage in (
    lambda parameter: parameter.pop("kind"),
    lambda parameter: parameter.pop("step"),
    lambda parameter: parameter.update(default="0"),
    lambda parameter: parameter.update(kind="dial"),
    lambda parameter: parameter.update(kind="choice"),
    lambda parameter: parameter.update(sensible={}),
):
    damaged = copy.deepcopy(rotate)
    damage(damaged["effects"][0]["parameters"][0])
    assert not validator.is_valid(damaged), damaged["effects"][0]["parameters"][0]
