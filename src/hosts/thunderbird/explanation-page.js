// Leaves of the page only the section that the address asks for.

import { localize } from "./localize.js";
import { readStatus, watchStatus } from "./status.js";

localize();
const wanted = location.search.slice(1);
for (const section of document.querySelectorAll("section")) {
  section.hidden = section.id !== wanted;
}

async function showReason() {
  const { reachable, reason } = await readStatus();
  document.getElementById("over").hidden = reachable !== true;
  if (reason) {
    document.getElementById("reason").textContent = reason; // Stays to be read when the service is there again.
  }
}

watchStatus(showReason);
showReason();
