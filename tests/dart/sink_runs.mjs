// What the sink does with a microphone and a plugin, tried out: its Dart files
// are made JavaScript. The same is asked of the Dart itself in test/.
import assert from 'node:assert/strict';
import {javaScriptOf} from './dart_to_js.mjs';
import {Clock, Microphone, Plugin, library, settled} from './dart_runtime.mjs';

const kFiles = ['flush_clock', 'capture_pipe', 'capture_sink'];

function sinkIn(texts, clock) {
  const code = kFiles.map(name => javaScriptOf(texts.get(`lib/src/${name}.dart`)));
  const given = {...library, Timer: clock.Timer};
  return new Function(...Object.keys(given), `${code.join('\n')}\nreturn CaptureSink;`)(
    ...Object.values(given));
}

const outcome = promise => promise.then(value => ({value}),
                                        error => ({code: error?.code ?? error}));

const {Duration} = library;
const second = 1000;

// Each is given a plugin, a microphone, a clock, and what makes a sink.
const kRuns = {
  async aTakeIsFlushedOnceASecond({plugin, microphone, clock, sinkOf}) {
    sinkOf().addStream(microphone);
    microphone.add();
    await clock.pass(second - 1);
    assert.deepEqual(plugin.calls, ['append']);
    await clock.pass(1);
    assert.deepEqual(plugin.calls, ['append', 'flush']);
    microphone.add();
    await clock.pass(second - 1);
    assert.equal(plugin.count('flush'), 1);
    await clock.pass(1);
    assert.equal(plugin.count('flush'), 2);
  },

  async nothingIsFlushedWithoutNewsNorMadeUpFor({plugin, microphone, clock, sinkOf}) {
    sinkOf().addStream(microphone);
    await clock.pass(10 * second);
    assert.deepEqual(plugin.calls, []);
    for (let i = 1; i < 3; i++) {
      microphone.add();
      await clock.pass(10 * second);
      assert.deepEqual(plugin.calls, Array(i).fill(['append', 'flush']).flat());
    }
  },

  async aSlowFlushIsNeverJoinedByAnother({plugin, microphone, clock, sinkOf}) {
    const waiting = plugin.holdBack('flush');
    sinkOf().addStream(microphone);
    microphone.add();
    await clock.pass(second);
    microphone.add();
    await clock.pass(3 * second);
    assert.equal(waiting.length, 1);
    waiting[0].resolve();
    await clock.pass(0);
    assert.equal(waiting.length, 2);
  },

  async zeroTurnsTheFlushesOff({plugin, microphone, clock, sinkOf}) {
    sinkOf({flushEvery: Duration.zero}).addStream(microphone);
    microphone.add();
    await clock.pass(10 * second);
    assert.deepEqual(plugin.calls, ['append']);
  },

  async aPausedTakeIsFlushedOnceMoreAndRests({plugin, microphone, clock, sinkOf}) {
    const sink = sinkOf();
    sink.addStream(microphone);
    microphone.add();
    await clock.pass(0);
    sink.pause();
    microphone.add();
    await clock.pass(second);
    microphone.add();
    await clock.pass(10 * second);
    assert.equal(plugin.count('flush'), 1);
    sink.resume();
    microphone.add();
    await clock.pass(0);
    assert.equal(plugin.count('flush'), 2);
  },

  async closeStopsTheClockAndTheTakeOnce({plugin, microphone, clock, sinkOf}) {
    const sink = sinkOf();
    const added = outcome(sink.addStream(microphone));
    microphone.add();
    await clock.pass(0);
    assert.deepEqual(await outcome(sink.close()), {value: 'sealed'});
    assert.deepEqual(await outcome(sink.close()), {value: 'sealed'});
    assert.deepEqual(await added, {value: undefined});
    assert.deepEqual(plugin.calls, ['append', 'stop']);
    assert.equal(microphone.hasListener, false);
    assert.ok(clock.isAtRest);
  },

  async theEndOfAStreamWaitsForTheFlushUnderWay({plugin, microphone, clock, sinkOf}) {
    const waiting = plugin.holdBack('flush');
    let isOver = false;
    const added = sinkOf().addStream(microphone).then(() => { isOver = true; });
    microphone.add();
    await clock.pass(second);
    microphone.close();
    await clock.pass(0);
    assert.equal(isOver, false);
    waiting[0].resolve();
    await added;
  },

  async aFailedWriteOrFlushStopsTheTakeOnce({clock, sinkOf}) {
    for (const method of ['append', 'flush']) {
      const [plugin, microphone] = [new Plugin(), new Microphone()];
      plugin.fail(method, 'writeFailed');
      const sink = sinkOf({corvane: plugin});
      const added = outcome(sink.addStream(microphone));
      microphone.add();
      await clock.pass(second);
      assert.deepEqual(await added, {code: 'writeFailed'});
      assert.equal(plugin.calls.at(-1), 'stop');
      assert.deepEqual(await outcome(sink.close()), {value: 'sealed'});
      assert.equal(plugin.count('stop'), 1);
      assert.equal(microphone.hasListener, false);
    }
    assert.ok(clock.isAtRest);
  },

  async aFlushThatFailsBehindAnotherErrorStopsTheTake({plugin, microphone, clock, sinkOf}) {
    const waiting = plugin.holdBack('flush');
    const added = outcome(sinkOf().addStream(microphone));
    microphone.add();
    await clock.pass(second);
    plugin.fail('append', 'encodeFailed');
    microphone.add();
    await clock.pass(0);
    waiting[0].reject('writeFailed');
    assert.deepEqual(await added, {code: 'writeFailed'});
    assert.deepEqual(plugin.calls, ['append', 'flush', 'append', 'stop']);
  },

  async oneThatFailsBetweenTwoStreamsIsToldAfterwards({plugin, microphone, clock, sinkOf}) {
    plugin.fail('flush', 'writeFailed');
    const sink = sinkOf();
    microphone.add();
    microphone.close();
    await sink.addStream(microphone);
    await clock.pass(second);
    assert.deepEqual(plugin.calls, ['append', 'flush', 'stop']);
    const told = {code: 'writeFailed'};
    assert.deepEqual(await outcome(sink.addStream(new Microphone())), told);
    assert.deepEqual(await outcome(sink.close()), told);
  },

  async oneThatFailsWhileTheTakeIsClosedIsToldByTheStream({plugin, microphone, clock, sinkOf}) {
    const waiting = plugin.holdBack('flush');
    const sink = sinkOf();
    const added = outcome(sink.addStream(microphone));
    microphone.add();
    await clock.pass(second);
    const closed = outcome(sink.close());
    await settled();
    waiting[0].reject('writeFailed');
    assert.deepEqual(await added, {code: 'writeFailed'});
    assert.deepEqual(await closed, {value: 'sealed'});
  },

  async anotherErrorLeavesTheTakeOpen({plugin, microphone, clock, sinkOf}) {
    plugin.fail('append', 'encodeFailed');
    const sink = sinkOf();
    const added = outcome(sink.addStream(microphone));
    microphone.add();
    await clock.pass(0);
    assert.deepEqual(await added, {code: 'encodeFailed'});
    assert.deepEqual(plugin.calls, ['append']);
    await sink.close();
    assert.deepEqual(plugin.calls, ['append', 'stop']);
  },

  async aStreamThatRefusesAListenerKeepsNoTakeOpen({plugin, microphone, sinkOf}) {
    microphone.listen(() => {}, {});
    const sink = sinkOf();
    const added = outcome(sink.addStream(microphone));
    assert.deepEqual(await outcome(sink.close()), {value: 'sealed'});
    assert.ok((await added).code instanceof library.StateError);
    assert.deepEqual(plugin.calls, ['stop']);
  },

  async tooManyAppendsOrBytesHoldTheStreamUp({clock, sinkOf}) {
    for (const bound of [{maxUnanswered: 2}, {maxUnansweredBytes: 7}]) {
      const [plugin, microphone] = [new Plugin(), new Microphone()];
      const waiting = plugin.holdBack('append');
      sinkOf({corvane: plugin, ...bound}).addStream(microphone);
      for (let i = 0; i < 5; i++) microphone.add();
      await clock.pass(0);
      assert.equal(waiting.length, 2);
      waiting[0].resolve();
      await clock.pass(0);
      assert.equal(waiting.length, 3);
      waiting[1].resolve();
      waiting[2].resolve();
      await clock.pass(0);
      assert.equal(waiting.length, 5);
    }
  },

  async aStreamThatDeliversBeforeItIsHeldIsHeldUp({plugin, microphone, clock, sinkOf}) {
    const waiting = plugin.holdBack('append');
    const eager = {listen(onData, others) {
      onData({length: 4});
      return microphone.listen(onData, others);
    }};
    sinkOf({maxUnanswered: 1}).addStream(eager);
    assert.ok(microphone.isPaused);
    waiting[0].resolve();
    await clock.pass(0);
    assert.equal(microphone.isPaused, false);
  },
};

// A run that doesn't ask what becomes of a stream has no opinion on its error.
function listenedTo(sink) {
  const addStream = sink.addStream.bind(sink);
  sink.addStream = stream => {
    const added = addStream(stream);
    added.ignore();
    return added;
  };
  return sink;
}

// All that a run waits for are turns, and the longest takes some dozen.
async function inTime(run) {
  let isOver = false;
  const ended = run.finally(() => { isOver = true; });
  ended.ignore();
  for (let turn = 0; turn < 1000 && !isOver; turn++) await settled();
  if (!isOver) throw new Error('it never ends');
  await ended;
}

// What was tried (a count), and what went otherwise (lines of text).
export async function sinkRuns(texts) {
  const faults = [];
  for (const [name, run] of Object.entries(kRuns)) {
    try {
      const clock = new Clock();
      const CaptureSink = sinkIn(texts, clock);
      const plugin = new Plugin();
      const sinkOf = options => listenedTo(new CaptureSink({corvane: plugin, ...options}));
      await inTime(run({plugin, microphone: new Microphone(), clock, sinkOf}));
    } catch (error) {
      const said = error.message ?? error.code ?? 'an error';
      faults.push(`sink, ${name}: ${said.replaceAll('\n', ' ')}`);
    }
  }
  return {count: Object.keys(kRuns).length, faults};
}
