package com.norvane.toolbox.loomkit.testing;

import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.*;

/** Tasks at the same time. */
public final class Together {
    private Together() {}

    /** Runs each task on a thread of its own, lets them start at one moment, and gives their results in order. */
    public static <T> List<T> run(List<? extends Callable<T>> tasks) throws Exception {
        ExecutorService threads = Executors.newFixedThreadPool(tasks.size());
        CountDownLatch start = new CountDownLatch(tasks.size());
        List<Future<T>> running = new ArrayList<>();
        for (Callable<T> task : tasks) {
            running.add(threads.submit(() -> {
                start.countDown();
                start.await();
                return task.call();
            }));
        }
        threads.shutdown();
        List<T> results = new ArrayList<>();
        for (Future<T> result : running) {
            results.add(result.get());
        }
        return results;
    }
}
