// The official MCP client, which nobody here wrote, talking to `corvane mcp` over stdio.
import { test } from "node:test";
import assert from "node:assert/strict";
import path from "node:path";
import { fileURLToPath } from "node:url";
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import { ListToolsResultSchema, ResultSchema } from "@modelcontextprotocol/sdk/types.js";

const here = path.dirname(fileURLToPath(import.meta.url));
const corvane = process.env.CORVANE_EXE ?? path.join(here, "..", "..", "build", "corvane");

test("an SDK client initializes, lists the tools and calls them", async () => {
  const transport = new StdioClientTransport({ command: corvane, args: ["mcp"], env: process.env, stderr: "pipe" });
  const client = new Client({ name: "interop-test", version: "1.0.0" });
  await client.connect(transport);
  try {
    assert.equal(client.getServerVersion().name, "corvane");
    assert.ok(client.getServerCapabilities().tools);
    const instructions = client.getInstructions();
    assert.match(instructions, /^Corvane sees (the Mac's|this machine's) dev stack: /);
    if (process.platform !== "darwin") assert.doesNotMatch(instructions, /Mac|simulator/);

    const { tools } = await client.listTools();
    assert.deepEqual(tools.map((t) => t.name), ["list_running", "stop", "free_memory", "find_free_port"]);

    const port = await client.callTool({ name: "find_free_port", arguments: { start: 3000 } });
    assert.equal(port.isError, false);
    assert.match(port.content[0].text, /^Port \d+ is free\.$/);

    const bad = await client.callTool({ name: "find_free_port", arguments: { start: 0 } });
    assert.equal(bad.isError, true);
    assert.equal(bad.content[0].text, "Invalid arguments for find_free_port; see its inputSchema.");

    // Asked per request at the newest revision, as Claude Code asks, the lists say how long any cache may
    // keep them, and still read as the SDK's own results.
    const params = { _meta: { "io.modelcontextprotocol/protocolVersion": "2026-07-28" } };
    for (const method of ["server/discover", "tools/list"]) {
      const result = await client.request({ method, params }, ResultSchema);
      assert.equal(result.resultType, "complete", method);
      assert.equal(result.ttlMs, 3600000, method);
      assert.equal(result.cacheScope, "public", method);
    }
    const versioned = await client.request({ method: "tools/list", params }, ListToolsResultSchema);
    assert.deepEqual(versioned.tools, tools);
  } finally {
    await client.close();
  }
});
