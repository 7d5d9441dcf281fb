import 'dart:async';
import 'dart:io';
import 'dart:typed_data';

import 'package:corvane/corvane.dart';
import 'package:flutter/foundation.dart' show ChangeNotifier;

import 'level_meter.dart';
import 'microphone.dart';
import 'recorder_phase.dart';
import 'take_store.dart';
import 'unfinished_takes.dart';

/// The application's one recorder: a microphone, the plugin, and the takes.
class Recorder extends ChangeNotifier {
  /// Creates a recorder that keeps its takes in [store].
  Recorder({
    required this.store,
    this.corvane = const Corvane(),
    this.openMicrophone = Microphone.open,
  });

  static const int _sampleRate = 48000;
  static const int _channels = 1;
  static const int _maxLogLines = 200;

  /// Where the takes are.
  final TakeStore store;

  /// The access to the plugin.
  final Corvane corvane;

  /// Opens what a take is recorded from.
  final Future<Microphone> Function({
    required int sampleRate,
    required int channels,
  }) openMicrophone;

  RecorderPhase _phase = RecorderPhase.idle;
  Microphone? _microphone;
  CaptureSink? _sink;
  Future<void>? _take;
  LevelMeter _meter = LevelMeter(sampleRate: _sampleRate, channels: _channels);
  Duration _before = Duration.zero;
  late final UnfinishedTakes _unfinished =
      UnfinishedTakes(store: store, corvane: corvane);
  List<FoundCapture> _captures = const <FoundCapture>[];
  StreamSubscription<CorvaneLogLine>? _logLines;
  final List<CorvaneLogLine> _log = <CorvaneLogLine>[];
  String? _problem;
  bool _isDisposed = false;

  /// What the recorder is doing.
  RecorderPhase get phase => _phase;

  /// How long the take is, what it held before it was resumed included.
  Duration get elapsed => _before + _meter.duration;

  /// The level of the microphone, from 0 to 1.
  double get level => _phase == RecorderPhase.recording ? _meter.peak : 0.0;

  /// The takes that a crash has interrupted and nothing was done about.
  List<FoundCapture> get interrupted => _unfinished.found;

  /// The captures that are there, the newest first.
  List<FoundCapture> get captures => _captures;

  /// The last lines of the plugin's log, the newest first.
  List<CorvaneLogLine> get log => _log;

  /// What has gone wrong since the last take began, or null.
  String? get problem => _problem;

  /// Listens to the log, and looks for what an earlier run has left.
  Future<void> open() async {
    _logLines = corvane.log.listen(_onLogLine);
    await _guarded(() async {
      for (final String path in await store.unfinished()) {
        await _guarded(() => _unfinished.lookBack(path));
      }
    });
    await _refresh();
  }

  /// Begins a new take. An interrupted one stays as it is.
  Future<void> start() {
    final String path = store.newPath(DateTime.now());
    return _record(
      path: path,
      sampleRate: _sampleRate,
      channels: _channels,
      before: Duration.zero,
      begin: () => corvane.start(
        capturePath: path,
        sampleRate: _sampleRate,
        channels: _channels,
      ),
    );
  }

  /// Goes on with [capture], in its own format.
  Future<void> goOn(FoundCapture capture) {
    return _record(
      path: capture.path,
      sampleRate: capture.sampleRate,
      channels: capture.channels,
      before: capture.duration,
      begin: () => corvane.resumeCapture(capture: capture),
    );
  }

  /// Seals [capture] as far as it goes.
  Future<void> finish(FoundCapture capture) async {
    await _guarded(() => _unfinished.settle(
          capture.path,
          () => corvane.finalizeCapture(capture: capture),
        ));
    await _refresh();
  }

  /// Pauses the take, or goes on with it.
  Future<void> togglePause() {
    return _guarded(() async {
      final RecorderPhase before = _phase;
      if (before == RecorderPhase.recording) {
        await _sink?.pause();
      } else if (before == RecorderPhase.paused) {
        await _sink?.resume();
      }
      // The take may have ended meanwhile.
      if (_phase == RecorderPhase.recording && before == _phase) {
        _enter(RecorderPhase.paused);
      } else if (_phase == RecorderPhase.paused && before == _phase) {
        _enter(RecorderPhase.recording);
      }
    });
  }

  /// Ends the take, if there is one, and completes when it is sealed.
  Future<void> stop() async {
    if (_phase == RecorderPhase.idle) {
      return;
    }
    _enter(RecorderPhase.stopping);
    // The end of its stream ends the take, with all that it still delivers.
    _microphone?.close();
    await _take;
  }

  @override
  void dispose() {
    _isDisposed = true;
    unawaited(stop());
    unawaited(_logLines?.cancel());
    super.dispose();
  }

  Future<void> _record({
    required String path,
    required int sampleRate,
    required int channels,
    required Duration before,
    required Future<void> Function() begin,
  }) async {
    if (_phase != RecorderPhase.idle) {
      return;
    }
    _problem = null;
    _before = before;
    _meter = LevelMeter(sampleRate: sampleRate, channels: channels);
    _enter(RecorderPhase.starting);
    final Future<void> take = _guarded(() async {
      final Microphone microphone =
          await openMicrophone(sampleRate: sampleRate, channels: channels);
      _microphone = microphone;
      try {
        await store.noteDown(path);
        await begin();
        _unfinished.takeUp(path);
        await _pipe(microphone, path);
      } finally {
        microphone.close();
        _microphone = null;
      }
    });
    _take = take;
    try {
      await take;
    } finally {
      _take = null;
      _enter(RecorderPhase.idle);
    }
    await _refresh();
  }

  // Whatever ends the microphone's stream, the capture is sealed; and whatever
  // becomes of that, what ended the stream is told too.
  Future<void> _pipe(Microphone microphone, String path) async {
    if (_phase == RecorderPhase.starting) {
      _enter(RecorderPhase.recording);
    } else {
      microphone.close(); // stopped before it has begun
    }
    final CaptureSink sink = CaptureSink(
      corvane: corvane,
      flushEvery: const Duration(seconds: 1),
    );
    _sink = sink;
    try {
      await _guarded(() => microphone.pcm.map<Uint8List>(_metered).pipe(sink));
    } finally {
      await _guarded(() => _unfinished.settle(path, sink.close));
      _sink = null;
    }
  }

  Uint8List _metered(Uint8List chunk) {
    if (_phase == RecorderPhase.recording) {
      _meter.measure(chunk);
      _tell();
    }
    return chunk;
  }

  Future<void> _refresh() {
    return _guarded(() async {
      _captures = await store.captures(corvane);
      _tell();
    });
  }

  Future<void> _guarded(Future<void> Function() work) async {
    try {
      await work();
    } on CorvaneException catch (error) {
      _complain(error.message);
    } on MicrophoneException catch (error) {
      _complain(error.message);
    } on FileSystemException catch (error) {
      _complain('$error');
    }
  }

  void _complain(String problem) {
    final String? before = _problem;
    _problem = before == null ? problem : '$before\n$problem';
    _tell();
  }

  void _enter(RecorderPhase phase) {
    _phase = phase;
    _tell();
  }

  void _tell() {
    if (!_isDisposed) {
      notifyListeners();
    }
  }

  void _onLogLine(CorvaneLogLine line) {
    _log.insert(0, line);
    if (_log.length > _maxLogLines) {
      _log.removeLast();
    }
    _tell();
    // A pause never fails, so this is all that tells of a write that did.
    if (line.message.startsWith('pause drain failed for')) {
      unawaited(stop());
    }
  }
}
