#!/usr/bin/env python3
"""Holds the lines of standard input against a JSON schema: check_schema.py SCHEMA. Status 77 without jsonschema."""
import json
import sys

try:
    import jsonschema
except ImportError:
    print("left out: there is no jsonschema here (Debian's python3-jsonschema)")
    sys.exit(77)

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
lines = 0
for line in sys.stdin:
    lines += 1
    for error in validator.iter_errors(json.loads(line)):
        sys.exit(f"line {lines}: {'/'.join(map(str, error.absolute_path))}: {error.message[:300]}")
sys.exit(None if lines else "no lines")
