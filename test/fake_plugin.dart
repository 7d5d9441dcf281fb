import 'dart:async';

import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

/// Matches a call that throws the exception of [code].
Matcher failsWith(CorvaneErrorCode code) {
  return throwsA(isA<CorvaneException>()
      .having((CorvaneException error) => error.code, 'code', code));
}

/// What the native plugin is for a test: it notes the calls, and answers them
/// as it is told.
class FakePlugin {
  /// Creates a plugin that stands at the channel until the test is over.
  FakePlugin() {
    TestWidgetsFlutterBinding.ensureInitialized();
    final TestDefaultBinaryMessenger messenger =
        TestDefaultBinaryMessengerBinding.instance.defaultBinaryMessenger;
    messenger.setMockMethodCallHandler(_channel, _answer);
    addTearDown(() => messenger.setMockMethodCallHandler(_channel, null));
  }

  static const MethodChannel _channel = MethodChannel('com.velka.corvane');

  /// The map that a sealed capture is answered with.
  static const Map<String, Object> sealedCapture = <String, Object>{
    'path': '/takes/take.aac',
    'durationMs': 1450,
    'bytes': 12061,
    'sourceDurationMs': 1450,
    'droppedAppendBytes': 96,
  };

  /// The calls, in the order in which they came.
  final List<MethodCall> calls = <MethodCall>[];

  /// What is answered to the method of a name; null where there is no entry.
  final Map<String, Future<Object?> Function(MethodCall)> answers =
      <String, Future<Object?> Function(MethodCall)>{};

  /// How often [method] was called.
  int count(String method) =>
      methods.where((String each) => each == method).length;

  /// The names of [calls].
  List<String> get methods =>
      calls.map<String>((MethodCall call) => call.method).toList();

  /// Makes [method] fail with [code].
  void fail(
    String method,
    String code, {
    String message = 'no',
    Object? details,
  }) {
    answers[method] = (MethodCall call) async {
      throw PlatformException(code: code, message: message, details: details);
    };
  }

  /// Makes the answers to [method] wait until they are completed.
  List<Completer<Object?>> holdBack(String method) {
    final List<Completer<Object?>> waiting = <Completer<Object?>>[];
    answers[method] = (MethodCall call) {
      final Completer<Object?> answer = Completer<Object?>();
      waiting.add(answer);
      return answer.future;
    };
    return waiting;
  }

  Future<Object?> _answer(MethodCall call) async {
    calls.add(call);
    final Future<Object?> Function(MethodCall)? answer = answers[call.method];
    return answer == null ? null : await answer(call);
  }
}
