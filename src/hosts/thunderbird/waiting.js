// Waiting that ends early when what it is for is not wanted any more.

// Ends after that many milliseconds, or when the signal says so.
export function pause(time, signal) {
  return new Promise((resolve) => {
    let timer = null;
    const end = () => {
      clearTimeout(timer);
      signal.removeEventListener("abort", end);
      resolve();
    };
    if (signal.aborted) {
      resolve();
      return;
    }
    timer = setTimeout(end, time);
    signal.addEventListener("abort", end);
  });
}

// Whether the promise comes to its end, a good or a bad one, before the time is over.
export async function endsWithin(time, promise, signal) {
  const ended = new AbortController();
  promise.then(() => ended.abort(), () => ended.abort());
  await pause(time, AbortSignal.any([ended.signal, signal]));
  return ended.signal.aborted;
}
