import 'package:corvane/corvane.dart';
import 'package:flutter/material.dart';

import 'capture_list.dart';
import 'log_view.dart';
import 'recorder.dart';
import 'recorder_phase.dart';
import 'transport.dart';

/// The application's one page.
class RecorderPage extends StatelessWidget {
  /// Creates the page of [recorder].
  const RecorderPage({required this.recorder, super.key});

  /// What the page shows and drives.
  final Recorder recorder;

  @override
  Widget build(BuildContext context) {
    return Scaffold(
      appBar: AppBar(title: const Text('Corvane')),
      body: ListenableBuilder(
        listenable: recorder,
        builder: (BuildContext context, Widget? child) {
          final String? problem = recorder.problem;
          return Column(
            crossAxisAlignment: CrossAxisAlignment.stretch,
            children: <Widget>[
              for (final FoundCapture capture in recorder.interrupted)
                RecoveryBanner(recorder: recorder, capture: capture),
              Transport(recorder: recorder),
              if (problem != null)
                Padding(
                  padding: const EdgeInsets.all(16),
                  child: Text(
                    problem,
                    style:
                        TextStyle(color: Theme.of(context).colorScheme.error),
                  ),
                ),
              Expanded(flex: 2, child: CaptureList(recorder: recorder)),
              const Divider(height: 1),
              Expanded(child: LogView(lines: recorder.log)),
            ],
          );
        },
      ),
    );
  }
}

/// Offers to go on with a take that was interrupted, or to finish it.
class RecoveryBanner extends StatelessWidget {
  /// Creates the offer to recover [capture].
  const RecoveryBanner({
    required this.recorder,
    required this.capture,
    super.key,
  });

  /// What recovers.
  final Recorder recorder;

  /// What is to be recovered.
  final FoundCapture capture;

  @override
  Widget build(BuildContext context) {
    final bool isIdle = recorder.phase == RecorderPhase.idle;
    return MaterialBanner(
      leading: const Icon(Icons.healing),
      content: Text(
        'A take was interrupted. ${clockOf(capture.duration)} of it are there: '
        '${capture.path}',
      ),
      actions: <Widget>[
        TextButton(
          onPressed: isIdle ? () => recorder.goOn(capture) : null,
          child: const Text('Go on'),
        ),
        TextButton(
          onPressed: isIdle ? () => recorder.finish(capture) : null,
          child: const Text('Finish'),
        ),
      ],
    );
  }
}
