// Whose service the program asks: what the options page reads and changes. The page and the background talk in messages of
// this type.

const messageType = "quillmate service";

// For the page: { choice, host, fixed, offered } as the program tells it, or null while it does not answer.
export function readService() {
  return browser.runtime.sendMessage({ type: messageType });
}

// For the page: "local" or "remote" from now on. What the program then says, with `problem`, its sentence, when it has
// refused; null when it does not answer.
export function chooseService(choice) {
  return browser.runtime.sendMessage({ type: messageType, choice });
}

// For the background: the answer to such a message, or nothing for another one.
export function answerServicePage({ type, choice }, program) {
  if (type === messageType) {
    return choice === undefined ? ask(program) : choose(program, choice);
  }
}

async function ask(program) {
  program.start();
  const answer = await program.ask({ type: "service" });
  return answer?.type === "service" ? answer : null;
}

async function choose(program, choice) {
  program.start();
  const answer = await program.ask({ type: "chooseService", choice });
  if (answer?.type === "service") {
    program.restart(); // It reads the choice when it starts; its sign-in, which is for the other service, goes with it.
    return answer;
  }
  const service = await ask(program);
  return service && { ...service, problem: answer?.message ?? "" };
}
