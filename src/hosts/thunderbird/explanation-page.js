// Leaves of the page only the section that the address asks for.

const wanted = location.search.slice(1);
for (const section of document.querySelectorAll("section")) {
  section.hidden = section.id !== wanted;
}
