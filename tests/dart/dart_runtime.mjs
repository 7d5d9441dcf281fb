// What a Dart file that was made JavaScript finds around it: the little of Dart's
// own libraries that the sink needs, with a clock in the test's hands.

Promise.prototype.ignore = function ignore() { this.catch(() => {}); };

// Everything that waits for nothing but its turn has happened.
export const settled = () => new Promise(resolve => setImmediate(resolve));

class Duration {
  constructor({seconds = 0, milliseconds = 0}) {
    this.milliseconds = seconds * 1000 + milliseconds;
  }

  static zero = new Duration({});
}

class Completer {
  isCompleted = false;

  future = new Promise(resolve => { this.resolve = resolve; });

  complete(value) {
    this.isCompleted = true;
    this.resolve(value);
  }
}

class Exception {}

class CorvaneException extends Exception {
  constructor(code) {
    super();
    this.code = code;
  }
}

class StateError {}

class AsyncError {
  constructor(error) { this.error = error; }
}

export const library = {
  Duration, Completer, Exception, CorvaneException, StateError, AsyncError,
  CorvaneErrorCode: {writeFailed: 'writeFailed', encodeFailed: 'encodeFailed'},
  Corvane: class {},
  Error: {throwWithStackTrace(error) { throw error; }},
  Future: {value: value => Promise.resolve(value)},
  unawaited: () => {},
};

// Time passes when it is told to.
export class Clock {
  #now = 0;

  #timers = [];

  constructor() {
    const clock = this;
    this.Timer = class {
      constructor({milliseconds}, callback) {
        Object.assign(this, {at: clock.#now + milliseconds, callback});
        clock.#timers.push(this);
      }

      cancel() { clock.#timers = clock.#timers.filter(each => each !== this); }
    };
  }

  get isAtRest() { return this.#timers.length === 0; }

  async pass(milliseconds) {
    await settled();
    const end = this.#now + milliseconds;
    for (;;) {
      const [next] = this.#timers.sort((a, b) => a.at - b.at);
      if (!next || next.at > end) break;
      next.cancel();
      this.#now = next.at;
      next.callback();
      await settled();
    }
    this.#now = end;
  }
}

// A stream of chunks, which come when the test says so.
export class Microphone {
  hasListener = false;

  isPaused = false;

  #isTaken = false;

  #waiting = [];

  listen(onData, {onError, onDone}) {
    if (this.#isTaken) throw new StateError();
    Object.assign(this, {onData, onError, onDone, hasListener: true});
    this.#isTaken = true;
    this.#deliver();
    return {
      pause: () => { this.isPaused = true; },
      resume: () => { this.isPaused = false; this.#deliver(); },
      cancel: () => { this.hasListener = false; return Promise.resolve(); },
    };
  }

  add(bytes = 4) { this.#wait(() => this.onData({length: bytes})); }

  addError(error) { this.#wait(() => this.onError(error)); }

  close() { this.#wait(() => { this.hasListener = false; this.onDone(); }); }

  #wait(event) {
    this.#waiting.push(event);
    this.#deliver();
  }

  async #deliver() {
    await null;
    while (this.hasListener && !this.isPaused && this.#waiting.length) {
      this.#waiting.shift()();
    }
  }
}

// Notes the calls, and answers them as it is told.
export class Plugin {
  calls = [];

  #answers = new Map([['stop', async () => 'sealed']]);

  constructor() {
    for (const method of ['append', 'flush', 'pause', 'resume', 'stop']) {
      this[method] = async () => {
        this.calls.push(method);
        return this.#answers.get(method)?.();
      };
    }
  }

  fail(method, code) {
    this.#answers.set(method, async () => { throw new CorvaneException(code); });
  }

  // The answers to `method` wait in the list: each {resolve, reject}.
  holdBack(method) {
    const waiting = [];
    this.#answers.set(method, () => new Promise((resolve, reject) => {
      waiting.push({resolve, reject: code => reject(new CorvaneException(code))});
    }));
    return waiting;
  }

  count(method) { return this.calls.filter(each => each === method).length; }
}
