"""Every configuration snippet of the README parses, and each registers `corvane mcp` under the key its
program reads (Cursor and Gemini CLI: mcpServers; VS Code: servers; Codex: mcp_servers); each agent's own
command registers it for every project; the property list that pins a row by hand holds a "pins" dictionary
of strings; and Homebrew is told to install from the repository's tap, whose formula is where a tap keeps it,
not from a path (Homebrew refuses formulae outside a tap)."""
import json
import os
import plistlib
import re
import shlex
import sys

try:
    import tomllib
except ImportError:  # Python before 3.11
    print("README snippets: tomllib needs Python 3.11")
    sys.exit(77)

text = open(sys.argv[1], encoding="utf-8").read()
blocks = re.findall(r"^```(\w+)\n(.*?)^```$", text, re.S | re.M)
parsers = {"json": json.loads, "toml": tomllib.loads, "xml": lambda body: plistlib.loads(body.encode())}
failures = []
seen = {"json": 0, "toml": 0, "xml": 0}
for language, body in (block for block in blocks if block[0] in parsers):
    seen[language] += 1
    try:
        config = parsers[language](body)
    except (ValueError, plistlib.InvalidFileException) as error:
        failures.append(f"a {language} snippet does not parse: {error}\n{body}")
        continue
    if language == "xml":
        pins = config.get("pins")
        if not isinstance(pins, dict) or not pins or not all(isinstance(v, str) for v in pins.values()):
            failures.append(f"the pins snippet lacks a dictionary of strings under \"pins\":\n{body}")
        continue
    tables = [config[key] for key in ("mcpServers", "servers", "mcp_servers") if key in config]
    server = tables[0].get("corvane") if len(tables) == 1 else None
    if not server or server.get("command") != "corvane" or server.get("args") != ["mcp"]:
        failures.append(f"a {language} snippet does not register `corvane mcp`:\n{body}")
    if server and "servers" in config and server.get("type") != "stdio":
        failures.append(f"the VS Code snippet lacks \"type\": \"stdio\":\n{body}")

# The agents' own commands register for every project, not only the one they run in.
commands = re.findall(r"^    ((?:claude|gemini) mcp add .*)$", text, re.M)
for command in commands:
    words = shlex.split(command)
    scope = next((words[i + 1] for i, word in enumerate(words[:-1]) if word in ("-s", "--scope")), None)
    if scope != "user" or words[-2:] != ["corvane", "mcp"]:
        failures.append(f"a command does not register `corvane mcp` for every project: {command}")
if len(commands) < 2:
    failures.append(f"expected the commands of Claude Code and Gemini CLI, found {commands}")
if seen["json"] < 3 or seen["toml"] < 1 or seen["xml"] < 1:
    failures.append(f"expected 3 JSON snippets, 1 TOML snippet and 1 property list, found {seen}")

brew = [line.split("#")[0].split() for line in text.splitlines() if re.match(r"\s*brew (tap|install)\b", line)]
taps = [words[2] for words in brew if words[1] == "tap" and len(words) == 4]
installs = [word for words in brew if words[1] == "install" for word in words[2:] if not word.startswith("-")]
if not taps or not all(tap.endswith("/corvane") for tap in taps):
    failures.append(f"the README taps no <owner>/corvane with its URL: {brew}")
if "corvane" not in installs or any(word.endswith(".rb") or "/" in word for word in installs):
    failures.append(f"the README installs corvane from a path, not its tap: {installs}")
root = os.path.dirname(os.path.abspath(sys.argv[1]))
if not os.path.isfile(os.path.join(root, "Formula", "corvane.rb")):
    failures.append("Formula/corvane.rb, where a tap keeps its formula, is missing")
for failure in failures:
    print("README snippets:", failure, file=sys.stderr)
sys.exit(1 if failures else 0)
